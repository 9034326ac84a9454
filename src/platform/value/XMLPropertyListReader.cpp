// How the XML form is read, whoever wrote it: expat finds the elements, a stack of open containers takes
// them.
#include "platform/value/Base64.h"
#include "platform/value/PropertyListCodec.h"

#include <expat.h>
#include <fmt/format.h>

#include <array>
#include <charconv>
#include <chrono>
#include <exception>
#include <limits>
#include <memory>

namespace platform::propertylist {

namespace {

enum class Element { plist, array, dictionary, key, string, data, date, integer, real, yes, no };

using Name = std::pair<std::string_view, Element>;

constexpr std::array<Name, 11> kNames{{{"plist", Element::plist}, {"array", Element::array},
    {"dict", Element::dictionary}, {"key", Element::key}, {"string", Element::string},
    {"data", Element::data}, {"date", Element::date}, {"integer", Element::integer}, {"real", Element::real},
    {"true", Element::yes}, {"false", Element::no}}};

std::optional<Name> nameOf(std::string_view text)
{
    for (const Name& name : kNames)
        if (name.first == text)
            return name;
    return std::nullopt;
}

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

/// All of `text` as a number, or none.
template <class Number, class... Base>
std::optional<Number> wholly(std::string_view text, Base... base)
{
    Number number{};
    const char* end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number, base...);
    if (error != std::errc() || stopped != end)
        return std::nullopt;
    return number;
}

/// Decimal, or hexadecimal behind "0x", with or without a sign; -2^63 to 2^64-1.
std::optional<Value> integerFrom(std::string_view text)
{
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+'))
        text.remove_prefix(1);
    const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (isHexadecimal)
        text.remove_prefix(2);
    const auto amount = wholly<std::uint64_t>(text, isHexadecimal ? 16 : 10);
    if (!amount)
        return std::nullopt;
    if (!isNegative)
        return Value(*amount);
    if (*amount > std::uint64_t(1) << 63)
        return std::nullopt;
    return Value(static_cast<std::int64_t>(0 - *amount));
}

std::optional<Value> realFrom(std::string_view text)
{
    if (text.starts_with('+'))
        text.remove_prefix(1);
    const auto number = wholly<double>(text);
    return number ? std::optional(Value(*number)) : std::nullopt;
}

/// `YYYY-MM-DDTHH:MM:SSZ` (ISO 8601), a day that exists.
std::optional<Value> dateFrom(std::string_view text)
{
    using namespace std::chrono;
    constexpr std::string_view shape = "0000-00-00T00:00:00Z";
    if (text.size() != shape.size())
        return std::nullopt;
    for (std::size_t at = 0; at < shape.size(); ++at)
        if (shape[at] == '0' ? (text[at] < '0' || text[at] > '9') : text[at] != shape[at])
            return std::nullopt;
    const auto part = [&](std::size_t at, std::size_t length) {
        return *wholly<int>(text.substr(at, length));
    };
    const year_month_day day{year(part(0, 4)), month(static_cast<unsigned>(part(5, 2))),
        std::chrono::day(static_cast<unsigned>(part(8, 2)))};
    const int hour = part(11, 2), minute = part(14, 2), second = part(17, 2);
    if (!day.ok() || hour > 23 || minute > 59 || second > 59)
        return std::nullopt;
    const auto whole = sys_days(day).time_since_epoch() + hours(hour) + minutes(minute) + seconds(second);
    return Value(Date{static_cast<double>(seconds(whole).count())});
}

/// An array or dictionary whose end has not come yet.
struct Container {
    bool isDictionary;
    std::vector<Value> elements;
    std::vector<Dictionary::Entry> entries;
    bool awaitsValue = false;
};

class Reader {
public:
    explicit Reader(const PropertyListLimits& limits) : _limits(limits), _parser(XML_ParserCreate(nullptr))
    {
        if (!_parser)
            throw std::bad_alloc();
        XML_Parser parser = _parser.get();
        XML_SetUserData(parser, this);
        XML_SetElementHandler(parser, &onStart, &onEnd);
        XML_SetCharacterDataHandler(parser, &onText);
        XML_SetStartDoctypeDeclHandler(parser, &onDoctype);
        XML_SetSkippedEntityHandler(parser, &onSkippedEntity);
    }

    Result<Value> read(std::string_view bytes);

private:
    static Reader& from(void* reader) { return *static_cast<Reader*>(reader); }
    static void XMLCALL onStart(void* reader, const XML_Char* name, const XML_Char**)
    {
        from(reader).guarded([&](Reader& self) { self.start(name); });
    }
    static void XMLCALL onEnd(void* reader, const XML_Char*)
    {
        from(reader).guarded([](Reader& self) { self.end(); });
    }
    static void XMLCALL onText(void* reader, const XML_Char* text, int length)
    {
        const std::string_view piece(text, static_cast<std::size_t>(length));
        from(reader).guarded([&](Reader& self) { self.text(piece); });
    }
    static void XMLCALL onDoctype(
        void* reader, const XML_Char* name, const XML_Char*, const XML_Char*, int hasSubset)
    {
        from(reader).guarded([&](Reader& self) {
            if (hasSubset)
                self.refuse(PropertyListFault::unsupported, "an internal document type subset");
            else if (std::string_view(name) != "plist")
                self.refuse(PropertyListFault::unsupported, "another type of document");
        });
    }
    static void XMLCALL onSkippedEntity(void* reader, const XML_Char* name, int)
    {
        from(reader).guarded([&](Reader& self) {
            self.refuse(PropertyListFault::unsupported, fmt::format("the entity {:.40}", name));
        });
    }

    /// No exception may pass through expat: it is kept, and thrown again behind it.
    template <class Body>
    void guarded(Body body)
    {
        if (_failure || _thrown)
            return;
        try {
            body(*this);
        } catch (...) {
            _thrown = std::current_exception();
            XML_StopParser(_parser.get(), XML_FALSE);
        }
    }

    void start(std::string_view name);
    void end();
    void text(std::string_view piece);
    void open(const Name& name);
    void close();
    void place(Value value);
    std::optional<Value> scalar() const;
    void refuse(PropertyListFault code, std::string_view reason);
    void refuseMalformed(std::string_view reason) { refuse(PropertyListFault::malformed, reason); }

    struct Free {
        void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
    };

    const PropertyListLimits& _limits;
    std::unique_ptr<std::remove_pointer_t<XML_Parser>, Free> _parser;
    bool _isInside = false;
    std::vector<Container> _containers;
    /// The element that has text, not containers or nothing, between its start and its end.
    std::optional<Name> _leaf;
    std::string _text;
    std::size_t _nodes = 0;
    Value _root;
    std::optional<Error> _failure;
    std::exception_ptr _thrown;
};

Result<Value> Reader::read(std::string_view bytes)
{
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        return fault(PropertyListFault::tooLarge, "too long for XML");
    // All at once: in pieces, a long token would be looked at again with every piece.
    const auto status = XML_Parse(_parser.get(), bytes.data(), static_cast<int>(bytes.size()), XML_TRUE);
    if (_thrown)
        std::rethrow_exception(_thrown);
    if (status != XML_STATUS_OK && !_failure) {
        const auto code = XML_GetErrorCode(_parser.get());
        if (code == XML_ERROR_NO_MEMORY)
            throw std::bad_alloc();
        refuseMalformed(XML_ErrorString(code));
    }
    if (_failure)
        return *_failure;
    if (_root.isAbsent())
        return fault(PropertyListFault::malformed, "the property list is empty");
    return std::move(_root);
}

void Reader::refuse(PropertyListFault code, std::string_view reason)
{
    _failure = fault(code,
        fmt::format("line {}, column {}: {}", XML_GetCurrentLineNumber(_parser.get()),
            XML_GetCurrentColumnNumber(_parser.get()) + 1, reason));
    XML_StopParser(_parser.get(), XML_FALSE);
}

void Reader::start(std::string_view name)
{
    if (_leaf)
        return refuseMalformed(fmt::format("<{:.40}> within <{}>", name, _leaf->first));
    const auto known = nameOf(name);
    if (!known)
        return refuse(PropertyListFault::unsupported, fmt::format("unknown element <{:.40}>", name));
    if ((known->second == Element::plist) == _isInside)
        return refuseMalformed(_isInside ? "<plist> within <plist>" : "the document is no <plist>");
    if (known->second != Element::plist)
        return open(*known);
    _isInside = true;
}

void Reader::open(const Name& name)
{
    const Element element = name.second;
    const bool isKey = element == Element::key;
    const bool inDictionary = !_containers.empty() && _containers.back().isDictionary;
    if (isKey && (!inDictionary || _containers.back().awaitsValue))
        return refuseMalformed(inDictionary ? "a key without a value" : "a key outside a dictionary");
    if (!isKey && inDictionary && !_containers.back().awaitsValue)
        return refuseMalformed("a value without a key");
    if (_containers.empty() && !_root.isAbsent())
        return refuseMalformed("a second value behind the first");
    if (++_nodes > _limits.nodes)
        return refuse(PropertyListFault::tooLarge, fmt::format("more than {} values", _limits.nodes));
    if (element == Element::array || element == Element::dictionary) {
        if (_containers.size() == _limits.depth)
            return refuse(
                PropertyListFault::tooLarge, fmt::format("more than {} levels deep", _limits.depth));
        _containers.push_back({element == Element::dictionary, {}, {}});
        return;
    }
    _text.clear();
    _leaf = name;
}

void Reader::text(std::string_view piece)
{
    if (_leaf)
        _text += piece;
    else if (!trimmed(piece).empty())
        refuseMalformed("text between the elements");
}

void Reader::end()
{
    if (!_leaf)
        return close();
    if (_leaf->second == Element::key) {
        _containers.back().entries.emplace_back(std::move(_text), Value());
        _containers.back().awaitsValue = true;
    } else if (auto value = scalar()) {
        place(std::move(*value));
    } else {
        return refuseMalformed(fmt::format("<{}> holds no such value: \"{:.40}\"", _leaf->first, _text));
    }
    _leaf.reset();
}

std::optional<Value> Reader::scalar() const
{
    switch (_leaf->second) {
    case Element::yes:
    case Element::no:
        return trimmed(_text).empty() ? std::optional(Value(_leaf->second == Element::yes)) : std::nullopt;
    case Element::integer:
        return integerFrom(trimmed(_text));
    case Element::real:
        return realFrom(trimmed(_text));
    case Element::date:
        return dateFrom(trimmed(_text));
    case Element::data: {
        const auto bytes = bytesFromBase64(_text);
        return bytes ? std::optional(Value::data(*bytes)) : std::nullopt;
    }
    default:
        return Value(std::string_view(_text));
    }
}

/// The end of an array, a dictionary or, with none open, of the list itself.
void Reader::close()
{
    if (_containers.empty())
        return;
    Container container = std::move(_containers.back());
    if (container.awaitsValue)
        return refuseMalformed("a key without a value");
    _containers.pop_back();
    place(container.isDictionary ? Value::dictionary(std::move(container.entries))
                                 : Value::array(std::move(container.elements)));
}

/// Puts a finished value where it belongs: into the innermost container, or at the root.
void Reader::place(Value value)
{
    if (_containers.empty()) {
        _root = std::move(value);
        return;
    }
    Container& container = _containers.back();
    if (!container.isDictionary) {
        container.elements.push_back(std::move(value));
        return;
    }
    container.entries.back().second = std::move(value);
    container.awaitsValue = false;
}

} // namespace

Result<Value> decodeXML(std::string_view bytes, const PropertyListLimits& limits)
{
    return Reader(limits).read(bytes);
}

} // namespace platform::propertylist
