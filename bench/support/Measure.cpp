// Clocks, memory and the line of a result.
#include "support/Measure.h"

#include <sys/resource.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace bench {

namespace {

double now(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace

Stopwatch::Stopwatch() : _wall(now(CLOCK_MONOTONIC)), _processor(now(CLOCK_PROCESS_CPUTIME_ID)) { }
double Stopwatch::wall() const { return now(CLOCK_MONOTONIC) - _wall; }
double Stopwatch::processor() const { return now(CLOCK_PROCESS_CPUTIME_ID) - _processor; }

long peakMemory()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

Result::Result(std::string_view job, std::string_view subject, std::string_view data, std::size_t cards)
    : _job(job), _subject(subject), _data(std::filesystem::path(data).filename().string()), _cards(cards)
{
}

void Result::add(double wall, double processor)
{
    _wall.push_back(wall);
    _processor.push_back(processor);
}

void Result::time(const std::function<void()>& body)
{
    const Stopwatch watch;
    body();
    add(watch.wall(), watch.processor());
}

std::string Result::line() const
{
    std::string text = fmt::format(R"({{"job":"{}","subject":"{}","data":"{}","cards":{},"median_s":{:.9g},)"
                                   R"("p99_s":{:.9g},"max_s":{:.9g},"processor_s":{:.9g},"peak_kb":{})",
        _job, _subject, _data, _cards, percentile(_wall, 0.5), percentile(_wall, 0.99), percentile(_wall, 1),
        percentile(_processor, 0.5), _peak > 0 ? _peak : peakMemory());
    for (const auto& [name, value] : _notes)
        text += fmt::format(R"(,"{}":{:.9g})", name, value);
    return text
        + fmt::format(R"(,"samples_s":[{:.6g}],"processor_samples_s":[{:.6g}]}})", fmt::join(_wall, ","),
            fmt::join(_processor, ","));
}

void Result::print() const
{
    fmt::print("{}\n", line());
    std::fflush(stdout);
}

double percentile(std::vector<double> samples, double part)
{
    std::ranges::sort(samples);
    const double rank = std::ceil(part * static_cast<double>(samples.size()));
    return samples.at(static_cast<std::size_t>(std::max(1.0, rank)) - 1);
}

std::string bytesOf(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
        fail(fmt::format("{}: cannot be read", path));
    std::ostringstream bytes;
    bytes << stream.rdbuf();
    return std::move(bytes).str();
}

std::size_t countCards(std::string_view bytes)
{
    constexpr std::string_view begin = "BEGIN:VCARD\r\n";
    std::size_t cards = 0;
    for (std::size_t at = 0; (at = bytes.find(begin, at)) != bytes.npos; at += begin.size())
        ++cards;
    return cards;
}

void fail(std::string_view why)
{
    fmt::print(stderr, "{}\n", why);
    std::exit(2);
}

} // namespace bench
