// What showing telephone numbers costs: for each list of each country, numbers of all its templates in turn.
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

constexpr std::size_t kNumbers = 1'000;
constexpr int kRounds = 100;

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
            List list{fmt::format("{} {}", country, number++), platform::makeRef<ZRPhoneFormatter>(), {}};
            for (const auto& format : formats) {
                list.formatter->addFormat(format);
                list.numbers.emplace_back(digitsFor(format));
            }
            all.push_back(std::move(list));
        }
    return all;
}

/// Has the list show so many numbers.
std::size_t show(const List& list)
{
    std::size_t shown = 0;
    for (std::size_t done = 0; done < kNumbers; ++done)
        shown += list.formatter->stringForObjectValue(list.numbers[done % list.numbers.size()])->size();
    return shown;
}

/// What showing takes in the median of many rounds: wall clock, then processor.
std::pair<double, double> secondsFor(const List& list)
{
    std::vector<double> wall, processor;
    for (int round = 0; round < kRounds; ++round) {
        const bench::Stopwatch watch;
        if (show(list) == 0)
            bench::fail("no number was shown by " + list.name);
        wall.push_back(watch.wall());
        processor.push_back(watch.processor());
    }
    return {bench::percentile(wall, 0.5), bench::percentile(processor, 0.5)};
}

} // namespace

int main()
{
    std::vector<std::pair<double, double>> seconds;
    std::pair<double, std::string> worst;
    const bench::Stopwatch reading;
    static_cast<void>(phoneFormats());
    const double read = reading.processor();
    for (const auto& list : lists()) {
        seconds.push_back(secondsFor(list));
        worst = std::max(worst, {seconds.back().second, list.name});
    }
    bench::Result result("format 1,000 numbers", "roster", "worst: " + worst.second, kNumbers);
    for (const auto& [wall, processor] : seconds)
        result.add(wall, processor);
    result.note("worst_processor_s", worst.first);
    result.note("read_templates_processor_s", read);
    result.print();
}
