// What reading the cards of a file costs: the line model's floor, the reader, the preparation, both in a row.
#include "floor/LineModel.h"
#include "interchange/vcard/ZRVCardDictionaryValueSetter.h"
#include "interchange/vcard/ZRVCardParser.h"
#include "interchange/vcard/prepare/Preparation.h"
#include "support/Measure.h"

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Dictionaries = std::vector<platform::Value>;

void readCards(std::string_view bytes, Dictionaries& cards)
{
    const auto parser = ZRVCardParser::initWithData(bytes);
    while (parser && !parser->atEnd()) {
        ZRVCardDictionaryValueSetter setter;
        if (parser->importToValueSetter(setter))
            cards.push_back(std::move(setter).dictionaryRep());
    }
}

template <class Taken>
void prepare(std::string_view bytes, Taken&& taken)
{
    vcard::prepare::Preparation preparation(bytes, {"bench", 0});
    for (vcard::prepare::CanonicalCard card; preparation.next(card);)
        taken(card.text);
}

} // namespace

// Not inlined and outside the unnamed namespace, so that bench/instructions can name it to its profiler.
extern "C" __attribute__((noinline)) void benchmarkedJob(const std::function<void()>& job) { job(); }

namespace {

/// Each job keeps what it reads, like its floor: memory that is not used again is part of the price.
struct Job {
    std::string_view name, resultName, subject;
    std::size_t (*run)(std::string_view bytes, std::function<void()>& release);
};

template <class Kept, class Read>
std::size_t keep(std::function<void()>& release, Read&& read)
{
    auto* kept = new Kept(read());
    const std::size_t count = kept->size();
    release = [kept] { delete kept; };
    return count;
}

constexpr Job kJobs[] = {
    {"floor", "parse", "floor",
        [](std::string_view bytes, std::function<void()>& release) {
            return keep<std::vector<bench::LineCard>>(release, [&] { return bench::readLineModel(bytes); });
        }},
    {"dictionaries", "parse", "roster",
        [](std::string_view bytes, std::function<void()>& release) {
            return keep<Dictionaries>(release, [&] {
                Dictionaries cards;
                readCards(bytes, cards);
                return cards;
            });
        }},
    {"prepare", "prepare", "roster",
        [](std::string_view bytes, std::function<void()>&) {
            std::size_t cards = 0;
            prepare(bytes, [&](const std::string& text) { cards += !text.empty(); });
            return cards;
        }},
    {"prepared-dictionaries", "prepare and parse", "roster",
        [](std::string_view bytes, std::function<void()>& release) {
            return keep<Dictionaries>(release, [&] {
                Dictionaries cards;
                prepare(bytes, [&](const std::string& text) { readCards(text, cards); });
                return cards;
            });
        }},
};

class ResultReporter final : public benchmark::BenchmarkReporter {
public:
    explicit ResultReporter(bench::Result& result) : _result(result) { }
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
            if (run.run_type == Run::RT_Iteration)
                _result.add(run.real_accumulated_time, run.cpu_accumulated_time);
    }

private:
    bench::Result& _result;
};

void measure(const Job& job, const std::string& path)
{
    const std::string bytes = bench::bytesOf(path);
    const std::size_t expected = bench::countCards(bytes);
    const auto body = [&](benchmark::State& state) {
        for (auto _ : state) {
            std::function<void()> release;
            std::size_t cards = 0;
            benchmarkedJob([&] { cards = job.run(bytes, release); });
            state.PauseTiming();
            if (release)
                release();
            if (cards != expected)
                bench::fail(fmt::format("{}: {} of {} cards were read", path, cards, expected));
            state.ResumeTiming();
        }
    };
    benchmark::RegisterBenchmark(job.name.data(), body)
        ->Iterations(1)
        ->UseRealTime()
        ->MeasureProcessCPUTime();
    bench::Result result(job.resultName, job.subject, path, expected);
    ResultReporter reporter(result);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    result.print();
}

} // namespace

int main(int count, char** arguments)
{
    benchmark::Initialize(&count, arguments);
    if (count == 3)
        for (const Job& job : kJobs)
            if (job.name == arguments[1]) {
                measure(job, arguments[2]);
                return 0;
            }
    fmt::print(stderr,
        "usage: {} floor|dictionaries|prepare|prepared-dictionaries FILE [--benchmark_repetitions=N]\n",
        arguments[0]);
    return 2;
}
