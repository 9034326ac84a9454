// How a value is written as XML.
#include "platform/value/Base64.h"
#include "platform/value/PropertyListCodec.h"
#include "platform/value/Unicode.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iterator>

namespace platform::propertylist {

namespace {

constexpr std::string_view kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n";
constexpr std::string_view kFoot = "</plist>\n";
/// Deeper than this nothing is set further in, so that the blanks of deep values do not outgrow them.
constexpr std::size_t kMaxIndent = 16;
constexpr std::size_t kDataLine = 76;

/// Whether XML 1.0 §2.2 has a place for the character, even by its number.
bool isWritable(char32_t character)
{
    if (character < 0x20)
        return character == '\t' || character == '\n' || character == '\r';
    return character != 0xFFFE && character != 0xFFFF;
}

class Writer : public Sink {
public:
    void open(const Value& container) override
    {
        const bool isArray = container.isArray();
        const bool isEmpty = isArray ? container.asArray().empty() : container.asDictionary()->count() == 0;
        indent();
        _text += isArray ? (isEmpty ? "<array/>\n" : "<array>\n") : (isEmpty ? "<dict/>\n" : "<dict>\n");
        _isEmpty.push_back(isEmpty);
    }
    void close(const Value& container) override
    {
        const bool isEmpty = _isEmpty.back();
        _isEmpty.pop_back();
        if (isEmpty)
            return;
        indent();
        _text += container.isArray() ? "</array>\n" : "</dict>\n";
    }
    std::optional<std::string> key(const std::string& key) override { return textElement("key", key); }
    std::optional<std::string> scalar(const Value& value) override;
    std::size_t size() const override { return _text.size(); }

    std::string finished()
    {
        _text += kFoot;
        return std::move(_text);
    }

private:
    void indent() { _text.append(std::min(_isEmpty.size(), kMaxIndent), '\t'); }
    void element(std::string_view name, std::string_view content)
    {
        indent();
        fmt::format_to(std::back_inserter(_text), "<{0}>{1}</{0}>\n", name, content);
    }
    std::optional<std::string> textElement(std::string_view name, std::string_view content);
    std::optional<std::string> date(double seconds);
    void data(std::string_view bytes);

    std::string _text{kHead};
    /// Of each open container.
    std::vector<bool> _isEmpty;
};

std::optional<std::string> Writer::scalar(const Value& value)
{
    switch (value.kind()) {
    case Value::Kind::boolean:
        indent();
        _text += value.asBoolean() ? "<true/>\n" : "<false/>\n";
        break;
    case Value::Kind::integer:
        element("integer", value.description());
        break;
    case Value::Kind::real:
        // The shortest digits that read back as the same number.
        element("real", fmt::format("{}", value.asReal()));
        break;
    case Value::Kind::date:
        return date(value.asDate().seconds);
    case Value::Kind::data:
        data(value.asBytes());
        break;
    default:
        return textElement("string", value.asText());
    }
    return std::nullopt;
}

std::optional<std::string> Writer::textElement(std::string_view name, std::string_view content)
{
    indent();
    fmt::format_to(std::back_inserter(_text), "<{}>", name);
    while (!content.empty()) {
        const std::string_view before = content;
        const char32_t character = *takeCharacter(content);
        if (!isWritable(character))
            return fmt::format("XML has no way to write U+{:04X}", static_cast<unsigned>(character));
        switch (character) {
        case '&':
            _text += "&amp;";
            break;
        case '<':
            _text += "&lt;";
            break;
        case '>':
            _text += "&gt;";
            break;
        case '\r':
            // A bare one would be read as a line feed.
            _text += "&#13;";
            break;
        default:
            _text += before.substr(0, before.size() - content.size());
        }
    }
    fmt::format_to(std::back_inserter(_text), "</{}>\n", name);
    return std::nullopt;
}

std::optional<std::string> Writer::date(double seconds)
{
    using namespace std::chrono;
    constexpr double first = -62135596800, end = 253402300800; // years 1 to 9999
    if (!(seconds >= first && seconds < end))
        return "the XML form holds dates of the years 1 to 9999";
    const auto whole = sys_seconds(std::chrono::seconds(static_cast<std::int64_t>(std::floor(seconds))));
    const auto midnight = floor<days>(whole);
    const year_month_day day(midnight);
    const hh_mm_ss time(whole - midnight);
    element("date",
        fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(day.year()),
            static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()), time.hours().count(),
            time.minutes().count(), time.seconds().count()));
    return std::nullopt;
}

void Writer::data(std::string_view bytes)
{
    const std::string digits = base64FromBytes(bytes);
    if (digits.size() <= kDataLine)
        return element("data", digits);
    indent();
    _text += "<data>\n";
    for (std::string_view rest = digits; !rest.empty(); rest.remove_prefix(std::min(kDataLine, rest.size())))
        fmt::format_to(std::back_inserter(_text), "{}\n", rest.substr(0, kDataLine));
    indent();
    _text += "</data>\n";
}

} // namespace

Result<std::string> encodeXML(const Value& root, const PropertyListLimits& limits)
{
    Writer writer;
    if (auto walked = walk(root, limits, writer); !walked)
        return walked.error();
    return writer.finished();
}

} // namespace platform::propertylist
