// Our codec against another one, in both directions and both forms: Python's own.
#include "RandomValues.h"
#include "platform/value/PropertyList.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <sstream>

namespace platform {
namespace {

constexpr const char* kPython = "/usr/bin/python3";
constexpr std::size_t kCount = 150;

/// Empty when both are the same, else where they part: the whole is too long to look at.
std::string difference(const std::string& ours, const std::string& theirs)
{
    if (ours == theirs)
        return "";
    const auto at = static_cast<std::size_t>(
        std::mismatch(ours.begin(), ours.end(), theirs.begin(), theirs.end()).first - ours.begin());
    const std::size_t from = at < 60 ? 0 : at - 60;
    return fmt::format("at {}:\nours   …{}\ntheirs …{}", at, ours.substr(from, 120),
        from < theirs.size() ? theirs.substr(from, 120) : "");
}

Value corners()
{
    // Calendars and codecs differ far from the epoch; contacts without a year are kept in 1604.
    constexpr double year1604 = -11539411200, year1920 = -1572782400, year2150 = 5711774400;
    constexpr std::int64_t b32 = std::int64_t(1) << 32;
    std::vector<Dictionary::Entry> wide;
    for (int at = 0; at < 300; ++at)
        wide.emplace_back(fmt::format("k{}", at), at);
    return Value::array({INT64_MIN, INT64_MIN + 1, -b32 / 2, -1, 0, 127, 128, 255, 256, 65535, 65536, b32 / 2,
        b32 - 1, b32, INT64_MAX, std::uint64_t(1) << 63, UINT64_MAX, 0.0, 0.1, 5e-324,
        std::numeric_limits<double>::max(), std::numeric_limits<double>::infinity(), true, false,
        Date{year1604}, Date{year1920}, Date{year2150}, Date{-62135596800}, Date{253402300799}, "",
        std::string(14, 'a'), std::string(15, 'a'), "ééééééééééééééé", std::string(70000, 'x'),
        "\U0001F600\U0010FFFF", Value::data(""), Value::data(std::string(300, '\0')), Value::array({}),
        Value::array({Value::array({})}), Value::dictionary({}), Value::dictionary({{"", ""}}),
        Value::dictionary(std::move(wide))});
}

/// What that writer makes equal to 0.0 and to "a\nb\nc".
Value readOnly() { return Value::array({-0.0, "a\r\nb\rc"}); }

TEST(PropertyListOracle, ReadsWhatWeWriteAndWritesWhatWeRead)
{
    if (!std::filesystem::exists(kPython))
        GTEST_SKIP() << kPython << " is missing: nothing to compare with";
    std::vector<Value> values{readOnly(), corners()};
    for (RandomValues random(1); values.size() < kCount;)
        values.push_back(random.next());
    const test::TemporaryFolder folder;
    std::vector<std::string> files, texts;
    for (const Value& value : values)
        for (const auto format : {PropertyListFormat::binary, PropertyListFormat::xml}) {
            const auto bytes = encodePropertyList(value, format);
            ASSERT_TRUE(bytes) << bytes.error().text << "\n" << spelled(value);
            files.push_back(folder / std::to_string(files.size()));
            texts.push_back(spelled(value));
            test::put(files.back(), *bytes);
        }
    const std::string command =
        fmt::format("{} {} {} > {}", kPython, ORACLE_SCRIPT, fmt::join(files, " "), folder / "answer");
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
    std::istringstream answer(test::bytesOf(folder / "answer"));
    for (std::size_t at = 0; at < files.size(); ++at) {
        std::string read;
        std::getline(answer, read);
        ASSERT_EQ(difference(texts[at], read), "") << at;
        for (const char* form : {".binary", ".xml"}) {
            const auto again = decodePropertyList(test::bytesOf(files[at] + form));
            ASSERT_TRUE(again) << at << form << ": " << again.error().text;
            if (texts[at] != spelled(readOnly())) {
                ASSERT_EQ(difference(spelled(*again), texts[at]), "") << at << form;
            }
        }
    }
}

} // namespace
} // namespace platform
