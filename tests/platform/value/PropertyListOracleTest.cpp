// Our codec against another one, in both directions and both forms: Python's own.
#include "RandomValues.h"
#include "platform/value/PropertyList.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <sstream>

namespace platform {
namespace {

constexpr const char* kPython = "/usr/bin/python3";
constexpr int kCount = 150;

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

class PropertyListOracle : public testing::Test {
protected:
    void SetUp() override
    {
        if (!std::filesystem::exists(kPython))
            GTEST_SKIP() << kPython << " is missing: nothing to compare with";
    }
    static void run(const std::string& arguments)
    {
        const std::string command = fmt::format("{} {} {}", kPython, ORACLE_SCRIPT, arguments);
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
    }

    const test::TemporaryFolder folder;
};

Value corners()
{
    // Calendars and codecs differ far from the epoch; contacts without a year are kept in 1604.
    constexpr double year1604 = -11539411200, year1920 = -1572782400, year2150 = 5711774400;
    return Value::array({INT64_MIN, INT64_MIN + 1, -1, 0, 127, 128, 255, 256, 65535, 65536, INT64_MAX,
        std::uint64_t(1) << 63, UINT64_MAX, 0.0, -0.0, 0.1, 5e-324, true, false, Date{year1604},
        Date{year1920}, Date{year2150}, Date{-62135596800}, Date{253402300799}, "", std::string(14, 'a'),
        std::string(15, 'a'), std::string(70000, 'x'), "\U0001F600\U0010FFFF", "a\r\nb\rc", Value::data(""),
        Value::array({}), Value::dictionary({}), Value::data(std::string(300, '\0'))});
}

TEST_F(PropertyListOracle, ReadsWhatWeWrite)
{
    RandomValues values(1);
    std::string files, expected;
    for (int at = 0; at < kCount; ++at) {
        const Value value = at == 0 ? corners() : values.next();
        for (const auto format : {PropertyListFormat::binary, PropertyListFormat::xml}) {
            const auto bytes = encodePropertyList(value, format);
            ASSERT_TRUE(bytes) << bytes.error().text << "\n" << spelled(value);
            const auto file = folder / fmt::format("{}.{}", at, static_cast<int>(format));
            test::put(file, *bytes);
            files += file + " ";
            expected += spelled(value) + "\n";
        }
    }
    const auto answer = folder / "answer";
    run("read " + files + "> " + answer);
    std::istringstream ours(expected), theirs(test::bytesOf(answer));
    for (std::string our, their; std::getline(ours, our);) {
        std::getline(theirs, their);
        ASSERT_EQ(difference(our, their), "");
    }
}

TEST_F(PropertyListOracle, WritesWhatWeRead)
{
    run(fmt::format("write {} {}", folder.path(), kCount));
    for (int at = 0; at < kCount; ++at)
        for (const char* form : {"binary", "xml"}) {
            const auto file = folder / fmt::format("{}.{}", at, form);
            const auto value = decodePropertyList(test::bytesOf(file));
            ASSERT_TRUE(value) << file << ": " << value.error().text;
            ASSERT_EQ(difference(spelled(*value), test::bytesOf(folder / fmt::format("{}.txt", at))), "")
                << file;
        }
}

} // namespace
} // namespace platform
