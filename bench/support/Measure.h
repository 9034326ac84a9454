// How a job is timed, and the line that tells the result.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace bench {

/// Wall clock and processor time (all threads) since it was made, in seconds.
///
/// Ownership: a plain value. Threads: one. Errors: none.
class Stopwatch {
public:
    Stopwatch();
    double wall() const;
    double processor() const;

private:
    double _wall, _processor;
};

/// The highest resident memory of this process so far, in KB.
long peakMemory();

/// What one job took, each time that it was done.
///
/// `bench/run` reads its line, so the names in it are a contract: job, subject ("floor" or "roster"), data,
/// cards, median_s, p99_s, max_s, processor_s (median), peak_kb, samples_s, then what `note` added.
///
/// Ownership: owns its samples. Threads: one. Errors: none.
class Result {
public:
    Result(std::string_view job, std::string_view subject, std::string_view data, std::size_t cards);

    void add(double wall, double processor);
    /// Times one run of `body`.
    void time(const std::function<void()>& body);
    void note(std::string_view name, double value) { _notes.emplace_back(name, value); }
    /// For jobs of other processes; otherwise this process's own.
    void setPeakMemory(long kilobytes) { _peak = kilobytes; }
    /// One JSON object.
    std::string line() const;
    void print() const;

private:
    std::string _job, _subject, _data;
    std::size_t _cards;
    long _peak = 0;
    std::vector<double> _wall, _processor;
    std::vector<std::pair<std::string, double>> _notes;
};

/// The value below which `part` of the samples lie: 0.5 for the median. At least one sample.
double percentile(std::vector<double> samples, double part);

/// The bytes of a file; ends the program with a message when it cannot be read.
std::string bytesOf(const std::string& path);

/// How many cards a file of cards holds.
std::size_t countCards(std::string_view bytes);

/// Ends the program with a message.
[[noreturn]] void fail(std::string_view why);

} // namespace bench
