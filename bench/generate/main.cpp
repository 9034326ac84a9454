// Writes the files that the benchmarks read.
#include "generate/Cards.h"
#include "generate/People.h"

#include <fmt/format.h>

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string_view>

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

} // namespace

int main(int count, char** arguments)
{
    std::uint64_t cards = 0, seed = kSeed;
    if (count < 3 || count > 4 || !number(arguments[1], cards)
        || (count == 4 && !number(arguments[3], seed))) {
        fmt::print(stderr,
            "usage: {} CARDS DIRECTORY [SEED]\n"
            "Writes cards_N_30.vcf, cards_N_21.vcf and cards_N.tsv: the same people three times.\n",
            arguments[0]);
        return 2;
    }
    const std::filesystem::path directory = arguments[2];
    std::error_code ignored;
    std::filesystem::create_directories(directory, ignored);
    OutputFile new30(directory / fmt::format("cards_{}_30.vcf", cards));
    OutputFile new21(directory / fmt::format("cards_{}_21.vcf", cards));
    OutputFile fields(directory / fmt::format("cards_{}.tsv", cards));
    for (std::size_t i = 0; i < cards; ++i) {
        const bench::Person person = bench::personNumbered(seed, i);
        bench::appendCard30(new30.text(), person);
        bench::appendCard21(new21.text(), person, i);
        bench::appendFields(fields.text(), person);
    }
    if (!new30.close() || !new21.close() || !fields.close()) {
        fmt::print(stderr, "{}: cannot write there\n", directory.string());
        return 1;
    }
    return 0;
}
