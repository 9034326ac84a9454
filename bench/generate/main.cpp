// Writes the files that the benchmarks read.
#include "generate/Cards.h"
#include "generate/People.h"
#include "generate/Planted.h"

#include <fmt/format.h>

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <vector>

namespace {

constexpr std::uint64_t kSeed = 20'260'101;
constexpr std::size_t kPiece = 1 << 20;

/// Grows by pieces, so that a large roster needs little memory.
class OutputFile {
public:
    explicit OutputFile(const std::filesystem::path& path) : _stream(path, std::ios::binary) { }
    std::string& text()
    {
        if (_text.size() > kPiece)
            flush();
        return _text;
    }
    bool close()
    {
        flush();
        _stream.close();
        return !_stream.fail();
    }

private:
    void flush()
    {
        _stream << _text;
        _text.clear();
    }

    std::ofstream _stream;
    std::string _text;
};

bool number(std::string_view text, std::uint64_t& value)
{
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), value);
    return fault == std::errc() && end == text.data() + text.size();
}

bool writePlain(std::uint64_t seed, std::size_t cards, const std::filesystem::path& directory)
{
    OutputFile new30(directory / fmt::format("cards_{}_30.vcf", cards));
    OutputFile new21(directory / fmt::format("cards_{}_21.vcf", cards));
    OutputFile fields(directory / fmt::format("cards_{}.tsv", cards));
    for (std::size_t i = 0; i < cards; ++i) {
        const bench::Person person = bench::personNumbered(seed, i);
        bench::appendCard30(new30.text(), person);
        bench::appendCard21(new21.text(), person, i);
        bench::appendFields(fields.text(), person);
    }
    return new30.close() && new21.close() && fields.close();
}

bool writePlanted(std::uint64_t seed, std::size_t cards, const std::filesystem::path& directory)
{
    OutputFile file(directory / fmt::format("planted_{}.vcf", cards));
    OutputFile planted(directory / fmt::format("planted_{}.tsv", cards));
    for (const auto& card : bench::plantedCards(seed, cards)) {
        bench::appendCard30(file.text(), bench::personOf(seed, card));
        if (card.planting != bench::Planting::none)
            planted.text() += fmt::format("{}\t{}\n", nameOf(card.planting), bench::ownWord(card.person));
    }
    return file.close() && planted.close();
}

constexpr std::string_view kUsage = R"(usage: bench_generate [--planted] CARDS DIRECTORY [SEED]
Writes cards_N_30.vcf, cards_N_21.vcf and cards_N.tsv: the same people three times. --planted: planted_N.vcf, with
second cards of some, and planted_N.tsv: how each of those is planted, and the last word of the names of its person.
)";

} // namespace

int main(int count, char** arguments)
{
    std::vector<std::string_view> words(arguments + 1, arguments + count);
    const bool plants = !words.empty() && words.front() == "--planted";
    words.erase(words.begin(), words.begin() + (plants ? 1 : 0));
    std::uint64_t cards = 0, seed = kSeed;
    if (words.size() < 2 || words.size() > 3 || !number(words[0], cards)
        || (words.size() == 3 && !number(words[2], seed))) {
        fmt::print(stderr, "{}", kUsage);
        return 2;
    }
    const std::filesystem::path directory = words[1];
    std::error_code ignored;
    std::filesystem::create_directories(directory, ignored);
    if ((plants ? writePlanted : writePlain)(seed, cards, directory))
        return 0;
    fmt::print(stderr, "{}: cannot write there\n", directory.string());
    return 1;
}
