// What writing cards costs: people that are fetched already as vCard 3.0, and the line model's floor.
#include "core/ZRPerson.h"
#include "floor/LineModel.h"
#include "store/ZRRoster.h"
#include "support/Measure.h"
#include "support/OpenRoster.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

// Not inlined and outside the unnamed namespace, so that bench/instructions can name it to its profiler.
extern "C" __attribute__((noinline)) void benchmarkedJob(const std::function<void()>& job) { job(); }

namespace {

void measure(std::string_view subject, bool photos, const std::string& data, std::size_t cards,
    const std::function<std::string()>& write)
{
    std::string text;
    bench::Result result(photos ? "export with photos" : "export", subject, data, cards);
    benchmarkedJob([&] { result.time([&] { text = write(); }); });
    if (bench::countCards(text) != cards)
        bench::fail(data + ": not all cards were written");
    result.note("bytes", static_cast<double>(text.size()));
    result.print();
}

/// The cards of a file, read before; without their photos, unless those are asked for.
void floorOf(const std::string& path, bool photos)
{
    auto cards = bench::readLineModel(bench::bytesOf(path));
    if (!photos)
        for (auto& card : cards)
            std::erase_if(card.lines, [](const bench::CardLine& line) { return line.name == "PHOTO"; });
    measure("floor", photos, path, cards.size(), [&] { return bench::writeLineModel(cards); });
}

/// The people of a roster with their notes, each by its own public call.
void cardsOf(const std::string& directory, bool photos)
{
    const auto roster = bench::openRoster(directory);
    const ZRRecordList people = roster->people();
    roster->prefetchDataForRecords(people);
    const ZRVCardOptions options = kZRVCardWithNote | (photos ? kZRVCardWithPhoto : 0);
    measure("roster", photos, directory, people.size(), [&] {
        std::string text;
        for (const auto& person : people)
            static_cast<const ZRPerson&>(*person)._appendVCardRepresentation(text, options);
        return text;
    });
}

} // namespace

int main(int count, char** arguments)
{
    const std::string_view job = count == 3 ? arguments[1] : "";
    const bool photos = job.ends_with("-with-photos");
    if (job.starts_with("floor"))
        floorOf(arguments[2], photos);
    else if (job.starts_with("cards"))
        cardsOf(arguments[2], photos);
    else
        return std::fprintf(stderr, "usage: %s floor[-with-photos] FILE | cards[-with-photos] DIRECTORY\n",
                   arguments[0]),
               2;
    return 0;
}
