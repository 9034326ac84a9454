// What showing a telephone number costs: for each country, numbers of all its templates, one after the other.
#include "format/PhoneFormats.h"
#include "format/ZRPhoneFormatter.h"
#include "support/Measure.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace {

using platform::Ref;
using platform::Value;

constexpr std::size_t kNumbers = 20'000;
constexpr int kRounds = 5;

/// A list as it is used, and digits for each of its templates.
struct List {
    std::string name;
    Ref<ZRPhoneFormatter> formatter;
    std::vector<Value> numbers;
};

std::string digitsFor(std::string_view format)
{
    std::string digits;
    for (const char character : format)
        if (character == '#')
            digits += static_cast<char>('0' + (3 + 7 * digits.size()) % 10);
        else if (character == '+' || (character >= '0' && character <= '9'))
            digits += character;
    return digits;
}

std::vector<List> lists()
{
    std::vector<List> all;
    for (const auto& [country, unused] : phoneFormats().asDictionary()->entries())
        for (std::size_t number = 0; const auto& formats : phoneFormatsOfCountry(country)) {
            List list{fmt::format("{}/{}", country, number++), platform::makeRef<ZRPhoneFormatter>(), {}};
            for (const auto& format : formats) {
                list.formatter->addFormat(format);
                list.numbers.emplace_back(digitsFor(format));
            }
            all.push_back(std::move(list));
        }
    return all;
}

/// Seconds of processor time for one number of the list: others may be at work on the machine.
double secondsFor(const List& list, std::size_t& shown)
{
    const bench::Stopwatch watch;
    for (std::size_t done = 0; done < kNumbers; ++done)
        shown += list.formatter->stringForObjectValue(list.numbers[done % list.numbers.size()])->size();
    return watch.processor() / kNumbers;
}

} // namespace

int main()
{
    std::size_t shown = 0;
    std::vector<double> seconds;
    std::pair<double, std::string> worst;
    const bench::Stopwatch reading;
    static_cast<void>(phoneFormats());
    const double read = reading.wall();
    for (const auto& list : lists()) {
        std::vector<double> rounds;
        for (int round = 0; round < kRounds; ++round)
            rounds.push_back(secondsFor(list, shown));
        seconds.push_back(bench::percentile(rounds, 0.5));
        worst = std::max(worst, {seconds.back(), list.name});
    }
    fmt::print(R"({{"job":"format numbers","lists":{},"median_us":{:.3f},"p99_us":{:.3f},"worst_us":{:.3f},)"
               R"("worst_list":"{}","read_templates_ms":{:.1f},"shown_bytes":{}}})"
               "\n",
        seconds.size(), bench::percentile(seconds, 0.5) * 1e6, bench::percentile(seconds, 0.99) * 1e6,
        worst.first * 1e6, worst.second, read * 1e3, shown);
}
