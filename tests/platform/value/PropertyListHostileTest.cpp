// What a property list may claim without being believed: each of these is refused with a reason, in time and
// memory that follow from its length.
#include "RandomValues.h"
#include "platform/value/PropertyList.h"

#include <gmock/gmock.h>

namespace platform {
namespace {

using testing::HasSubstr;
using namespace std::string_literals;

std::string number(std::uint64_t value, int width)
{
    std::string bytes;
    for (int shift = (width - 1) * 8; shift >= 0; shift -= 8)
        bytes += static_cast<char>(value >> shift & 0xFF);
    return bytes;
}

/// A binary property list of hand-made objects, whose trailer can be made to lie.
struct Forged {
    std::vector<std::string> objects;
    int referenceWidth = 1;
    int offsetWidth = 4;
    std::uint64_t top = 0;
    std::optional<std::uint64_t> count = std::nullopt;
    std::optional<std::uint64_t> table = std::nullopt;
    /// In place of the true ones.
    std::vector<std::uint64_t> offsets{};

    std::string bytes() const
    {
        std::string text = "bplist00", where;
        for (std::size_t at = 0; at < objects.size(); ++at) {
            where += number(at < offsets.size() ? offsets[at] : text.size(), offsetWidth);
            text += objects[at];
        }
        const std::uint64_t start = text.size();
        return text + where + std::string(6, '\0') + number(static_cast<unsigned>(offsetWidth), 1)
            + number(static_cast<unsigned>(referenceWidth), 1) + number(count.value_or(objects.size()), 8)
            + number(top, 8) + number(table.value_or(start), 8);
    }
};

/// Arrays of which each holds only the next, the last nothing.
std::string chain(std::uint32_t length)
{
    Forged forged{.objects = {}, .referenceWidth = 4};
    for (std::uint32_t at = 1; at < length; ++at)
        forged.objects.push_back("\xA1" + number(at, 4));
    forged.objects.push_back("\xA0");
    return forged.bytes();
}

/// Arrays of which each holds the next twice.
std::string bomb(int length)
{
    Forged forged;
    for (int at = 1; at < length; ++at)
        forged.objects.push_back(
            "\xA2" + number(static_cast<unsigned>(at), 1) + number(static_cast<unsigned>(at), 1));
    forged.objects.push_back("\xA0");
    return forged.bytes();
}

/// A hundred arrays in one another, first read on their own, then met again at the end of 450 others.
std::string chainMetAgain()
{
    Forged forged{.objects = {"\xA2" + number(1, 2) + number(101, 2)}, .referenceWidth = 2};
    for (unsigned at = 2; at <= 551; ++at)
        forged.objects.push_back(at == 101 ? "\xA0" : "\xA1" + number(at == 551 ? 1 : at, 2));
    return forged.bytes();
}

std::string times(std::size_t count, std::string_view text)
{
    std::string all;
    for (; count > 0; --count)
        all += text;
    return all;
}

Value nested(std::size_t depth)
{
    Value value = Value::array({});
    while (--depth > 0)
        value = Value::array({value});
    return value;
}

TEST(PropertyListHostile, IsRefusedWithAReason)
{
    using enum PropertyListFault;
    const std::string shortArray = "\xA2\x01\x01", text = "\x51"s + "a";
    const struct {
        const char* name;
        std::string bytes;
        PropertyListFault fault;
        const char* reason;
    } cases[] = {
        {"nothing", "", unknownFormat, "not a property list"},
        {"only the head", "bplist00", malformed, "too short"},
        {"another version", "bplist15" + std::string(40, '\0'), unsupported, "version"},
        {"a million arrays", chain(1'000'000), tooLarge, "levels deep"},
        {"a million arrays in XML", "<plist>" + times(1'000'000, "<array>"), tooLarge, "levels deep"},
        {"a million dictionaries in XML", "<plist>" + times(1'000'000, "<dict><key/>"), tooLarge,
            "levels deep"},
        {"a million unknown elements", "<plist>" + times(1'000'000, "<a>"), unsupported,
            "unknown element <a>"},
        {"one level too many", chain(513), tooLarge, "levels deep"},
        {"one level too many by a second way", chainMetAgain(), tooLarge, "levels deep"},
        {"31 arrays, each twice in the one before", bomb(31), tooLarge, "values"},
        {"255 arrays, each twice in the one before", bomb(255), tooLarge, "values"},
        {"an array in itself", Forged{{"\xA1\x00"s}}.bytes(), malformed, "holds itself"},
        {"a ring of two", Forged{{"\xA1\x01", "\xA1\x00"s}}.bytes(), malformed,
            "object 1 at byte 10: holds itself"},
        {"a dictionary in itself", Forged{{"\xD1\x01\x00"s, text}}.bytes(), malformed, "holds itself"},
        {"a dictionary as its own key", Forged{{"\xD1\x00\x01"s, text}}.bytes(), malformed, "is no text"},
        {"a number as key", Forged{{"\xD1\x01\x01", "\x09"}}.bytes(), malformed, "is no text"},
        {"a reference past the end", Forged{{"\xA1\x07"}}.bytes(), malformed, "refers to object 7 of 1"},
        {"an array of 2^63", Forged{{"\xAF\x13\x80" + std::string(7, '\0')}}.bytes(), malformed, "counts"},
        {"an array longer than the file", Forged{{"\xAF\x10\xFF"}}.bytes(), malformed, "counts 255"},
        {"an array longer than its room", Forged{{"\xAF\x10\x20"}}.bytes(), malformed, "no room for 32"},
        {"a text longer than its room", Forged{{"\x5E"s + "abc"}}.bytes(), malformed, "past the end"},
        {"a wide text longer than its room", Forged{{"\x62\x00"s + "a"}}.bytes(), malformed, "past the end"},
        {"data of 2^63", Forged{{"\x4F\x13\x80" + std::string(7, '\0')}}.bytes(), malformed, "counts"},
        {"a count that is text", Forged{{"\x5F\x51"s + "abc"}}.bytes(), malformed, "count is no integer"},
        {"a number cut off", Forged{{"\x13\x01"}}.bytes(), malformed, "past the end"},
        {"an integer of 65 bits", Forged{{"\x14" + number(1, 8) + number(0, 8)}}.bytes(), unsupported,
            "64 bits"},
        {"a date that is none", Forged{{"\x33\x7F\xF8" + std::string(6, '\0')}}.bytes(), malformed, "finite"},
        {"a text that is not ASCII", Forged{{"\x51\xE9"}}.bytes(), malformed, "not ASCII"},
        {"a null", Forged{{"\x00"s}}.bytes(), unsupported, "unknown kind 0x00"},
        {"a set", Forged{{"\xC0"}}.bytes(), unsupported, "unknown kind 0xc0"},
        {"a reference as value", Forged{{"\x80\x01"}}.bytes(), unsupported, "unknown kind 0x80"},
        {"an integer of 32 bytes", Forged{{"\x15" + std::string(32, '\0')}}.bytes(), unsupported,
            "unknown kind"},
        {"no objects", Forged{.objects = {text}, .count = 0}.bytes(), malformed, "as root"},
        {"too many objects", Forged{.objects = {text}, .count = 2}.bytes(), malformed, "no room for 2"},
        {"2^64-1 objects", Forged{.objects = {text}, .count = UINT64_MAX}.bytes(), malformed, "no room"},
        {"a root that is none", Forged{.objects = {text}, .top = 1}.bytes(), malformed, "object 1 of 1"},
        {"a table past the end", Forged{.objects = {text}, .table = 1000}.bytes(), malformed, "byte 1000"},
        {"a table at 2^64-1", Forged{.objects = {text}, .table = UINT64_MAX}.bytes(), malformed,
            "no offset table"},
        {"a table in the head", Forged{.objects = {text}, .table = 0}.bytes(), malformed, "no offset table"},
        {"offsets without width", Forged{.objects = {text}, .offsetWidth = 0}.bytes(), malformed, "wide"},
        {"references of 9 bytes", Forged{.objects = {text}, .referenceWidth = 9}.bytes(), malformed, "wide"},
        {"an object in the head", Forged{.objects = {text}, .offsets = {0}}.bytes(), malformed, "outside"},
        {"an object in the table", Forged{.objects = {text}, .offsets = {10}}.bytes(), malformed, "outside"},
    };
    for (const auto& [name, bytes, expected, reason] : cases) {
        const auto value = decodePropertyList(bytes);
        ASSERT_FALSE(value) << name;
        EXPECT_EQ(value.error().code, static_cast<long>(expected)) << name << ": " << value.error().text;
        EXPECT_THAT(value.error().text, HasSubstr(reason)) << name;
    }
}

// Ten thousand objects that all start at the same long text would be ten thousand long texts.
TEST(PropertyListHostile, CannotHaveItsBytesReadTwice)
{
    constexpr unsigned count = 10'000;
    std::string references, filler(1'000'000, 'x');
    for (unsigned at = 1; at <= count; ++at)
        references += number(at, 2);
    Forged forged{.objects = {"\xAF\x11" + number(count, 2) + references}, .referenceWidth = 2};
    forged.objects.push_back("\x5F\x12" + number(filler.size(), 4) + filler);
    forged.objects.resize(count + 1);
    forged.offsets = {8};
    forged.offsets.resize(count + 1, 8 + forged.objects[0].size());
    const auto value = decodePropertyList(forged.bytes());
    ASSERT_FALSE(value);
    EXPECT_THAT(value.error().text, HasSubstr("overlap"));
}

// A long key is one object of the file, yet every dictionary has its own copy.
TEST(PropertyListHostile, PaysForATextAsOftenAsItIsUsed)
{
    constexpr unsigned count = 200;
    const std::string key(100'000, 'k');
    std::string references;
    for (unsigned at = 0; at < count; ++at)
        references += number(at + 2, 1);
    Forged forged{{"\xAF\x10" + number(count, 1) + references, "\x5F\x12" + number(key.size(), 4) + key}};
    for (unsigned at = 0; at < count; ++at)
        forged.objects.push_back("\xD1\x01\x01");
    const auto refused = decodePropertyList(forged.bytes(), {.bytes = 10'000'000});
    ASSERT_FALSE(refused);
    EXPECT_THAT(refused.error().text, HasSubstr("more than 10000000 bytes"));
    EXPECT_TRUE(decodePropertyList(forged.bytes(), {.bytes = 40'000'000}));
}

TEST(PropertyListLimits, AreTheSameForReadingAndWriting)
{
    const auto wide = Value::array(std::vector<Value>(99, Value(1)));
    const struct {
        const char* name;
        Value value;
        PropertyListLimits within, past;
    } cases[] = {
        {"depth", nested(512), {}, {.depth = 511}},
        {"nodes", wide, {.nodes = 100}, {.nodes = 99}},
        {"nodes with keys", Value::dictionary({{"a", 1}, {"b", 1}}), {.nodes = 5}, {.nodes = 4}},
        {"shared arrays", Value::array({wide, wide}), {.nodes = 201}, {.nodes = 200}},
        {"text", Value::array(std::vector<Value>(9, Value(std::string(1000, 'a')))), {.bytes = 10'000},
            {.bytes = 8'999}},
    };
    for (const auto& [name, value, within, past] : cases)
        for (const auto format : {PropertyListFormat::binary, PropertyListFormat::xml}) {
            const auto bytes = encodePropertyList(value, format, within);
            ASSERT_TRUE(bytes) << name << ": " << bytes.error().text;
            EXPECT_TRUE(decodePropertyList(*bytes, within)) << name;
            for (const auto& error :
                {encodePropertyList(value, format, past).error(), decodePropertyList(*bytes, past).error()})
                EXPECT_EQ(error.code, static_cast<long>(PropertyListFault::tooLarge)) << name << error.text;
        }
}

TEST(PropertyListHostile, ReadsHalfAPairAsAReplacement)
{
    const struct {
        std::string units;
        const char* expected;
    } cases[] = {{"\xD8\x3D", "\uFFFD"}, {"\xDE\x00"s, "\uFFFD"},
        {"\xD8\x3D\xD8\x3D\xDE\x00"s, "\uFFFD\U0001F600"}, {"\xD8\x3D\x00\x41"s, "\uFFFDA"}};
    for (const auto& [units, expected] : cases) {
        const auto marker = static_cast<char>(0x60 + units.size() / 2);
        const auto value = decodePropertyList(Forged{{marker + units}}.bytes());
        ASSERT_TRUE(value) << value.error().text;
        EXPECT_EQ(value->asText(), expected);
    }
}

// float32, eight-byte offsets and references, wide negative: others may write them, we do not.
TEST(PropertyListHostile, ReadsFormsThatWeDoNotWrite)
{
    const Forged forged{
        .objects = {"\xA3" + number(1, 8) + number(2, 8) + number(3, 8), "\x22\x3F\x80\x00\x00"s,
            "\x14" + number(UINT64_MAX, 8) + number(UINT64_MAX - 1, 8), "\x14" + number(0, 8) + number(5, 8)},
        .referenceWidth = 8,
        .offsetWidth = 8};
    EXPECT_EQ(spelled(*decodePropertyList(forged.bytes())), spelled(Value::array({1.0, -2, 5})));
}

/// A bit of everything, to be damaged.
std::string valid(PropertyListFormat format)
{
    std::string bytes =
        *encodePropertyList(Value::dictionary({{"Name", "Ana Ω\U0001F600"}, {"Born", Date{-11539324800}},
                                {"n", -3}, {"r", 0.5}, {"Data", Value::data("\1\2\3")},
                                {"List", Value::array({true, Value::dictionary({{"a", "b"}})})}}),
            format);
    while (bytes.ends_with('\n'))
        bytes.pop_back();
    return bytes;
}

TEST(DamagedPropertyList, IsRefusedWhereverItIsCutOff)
{
    for (const std::string& bytes : {valid(PropertyListFormat::binary), valid(PropertyListFormat::xml)}) {
        ASSERT_TRUE(decodePropertyList(bytes));
        for (std::size_t length = 0; length < bytes.size(); ++length) {
            // A copy of its own: reading one byte too far is seen.
            const std::vector<char> cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length));
            const auto value = decodePropertyList({cut.data(), cut.size()});
            ASSERT_FALSE(value) << length << " of " << bytes;
            ASSERT_FALSE(value.error().text.empty()) << length << " of " << bytes;
        }
    }
}

TEST(DamagedPropertyList, GivesAReasonOrAValueThatCanBeWritten)
{
    for (const std::string& bytes : {valid(PropertyListFormat::binary), valid(PropertyListFormat::xml)}) {
        int refused = 0;
        for (std::size_t at = 0; at < bytes.size(); ++at)
            for (const unsigned bits : {0x01u, 0x80u, 0xFFu}) {
                std::string damaged = bytes;
                damaged[at] = static_cast<char>(static_cast<unsigned char>(damaged[at]) ^ bits);
                const auto value = decodePropertyList(damaged);
                refused += !value;
                ASSERT_TRUE(!value || encodePropertyList(*value, PropertyListFormat::binary))
                    << at << " of " << bytes;
            }
        EXPECT_GT(refused, 100) << bytes;
    }
}

} // namespace
} // namespace platform
