// Which form is meant, and what a property list can hold at all: the parts that both forms share.
#include "platform/value/PropertyList.h"

#include "platform/value/PropertyListCodec.h"
#include "platform/value/Unicode.h"

#include <fmt/format.h>

#include <cmath>

namespace platform {

namespace propertylist {

namespace {

/// A container that the walk stands in, and how far it has come.
struct Step {
    const Value& container;
    std::size_t next = 0;

    std::size_t count() const
    {
        return container.isArray() ? container.asArray().size() : container.asDictionary()->count();
    }
    const Value& child(std::size_t at) const
    {
        return container.isArray() ? container.asArray()[at] : container.asDictionary()->entries()[at].second;
    }
    const std::string* key(std::size_t at) const
    {
        return container.isArray() ? nullptr : &container.asDictionary()->entries()[at].first;
    }
};

/// Where the walk stands, as a person would write it: `Email[2].label`. Empty at the root.
std::string pathOf(const std::vector<Step>& steps)
{
    // Of a deep path the near end is left out: the culprit lies at the far one.
    constexpr std::size_t shown = 16;
    std::string path = steps.size() > shown ? "…" : "";
    for (std::size_t at = steps.size() > shown ? steps.size() - shown : 0; at < steps.size(); ++at) {
        const Step& step = steps[at];
        if (const auto* key = step.key(step.next - 1))
            path += (path.empty() ? "" : ".") + key->substr(0, 64);
        else
            path += fmt::format("[{}]", step.next - 1);
    }
    return path;
}

/// Why a property list holds no such value, or nothing when it does.
const char* reasonAgainst(const Value& value)
{
    switch (value.kind()) {
    case Value::Kind::absent:
        return "a property list holds no absent value";
    case Value::Kind::null:
        return "a property list holds no null marker";
    case Value::Kind::object:
        return "a property list holds no objects";
    case Value::Kind::date:
        return std::isfinite(value.asDate().seconds) ? nullptr : "the date is not finite";
    case Value::Kind::string:
        return isUTF8(value.asText()) ? nullptr : "the text is not UTF-8";
    default:
        return nullptr;
    }
}

class Walk {
public:
    Walk(const PropertyListLimits& limits, Sink& sink) : _limits(limits), _sink(sink) { }

    Result<void> over(const Value& root)
    {
        visit(root);
        while (!_failure && !_steps.empty())
            advance();
        if (_failure)
            return *_failure;
        return {};
    }

private:
    /// To the next child of the innermost container, or out of it.
    void advance()
    {
        Step& step = _steps.back();
        if (step.next == step.count()) {
            _sink.close(step.container);
            _steps.pop_back();
            return;
        }
        const std::size_t at = step.next++;
        if (const auto* key = step.key(at)) {
            if (!isUTF8(*key))
                return fail(PropertyListFault::notEncodable, "the key is not UTF-8");
            charge(key->size());
            if (const auto reason = _sink.key(*key))
                return fail(PropertyListFault::notEncodable, *reason);
        }
        visit(step.child(at));
    }

    void visit(const Value& value)
    {
        if (const char* reason = reasonAgainst(value))
            return fail(PropertyListFault::notEncodable, reason);
        charge(value.asText().size() + value.asBytes().size());
        if (_failure)
            return;
        if (!value.isArray() && !value.isDictionary()) {
            if (const auto reason = _sink.scalar(value))
                fail(PropertyListFault::notEncodable, *reason);
            return;
        }
        if (_steps.size() == _limits.depth)
            return fail(PropertyListFault::tooLarge, fmt::format("more than {} levels deep", _limits.depth));
        _sink.open(value);
        _steps.push_back({value});
    }

    void charge(std::size_t bytes)
    {
        _bytes += bytes;
        if (++_nodes > _limits.nodes)
            fail(PropertyListFault::tooLarge, fmt::format("more than {} values", _limits.nodes));
        else if (_bytes > _limits.bytes || _sink.size() > _limits.bytes)
            fail(PropertyListFault::tooLarge, fmt::format("more than {} bytes", _limits.bytes));
    }

    void fail(PropertyListFault code, std::string_view reason)
    {
        if (_failure)
            return;
        const std::string path = pathOf(_steps);
        _failure = fault(code, fmt::format("{}{}{}", path, path.empty() ? "" : ": ", reason));
    }

    const PropertyListLimits& _limits;
    Sink& _sink;
    std::vector<Step> _steps;
    std::optional<Error> _failure;
    std::size_t _nodes = 0;
    std::size_t _bytes = 0;
};

} // namespace

Result<void> walk(const Value& root, const PropertyListLimits& limits, Sink& sink)
{
    return Walk(limits, sink).over(root);
}

} // namespace propertylist

Result<std::string> encodePropertyList(
    const Value& root, PropertyListFormat format, const PropertyListLimits& limits)
{
    auto bytes = format == PropertyListFormat::binary ? propertylist::encodeBinary(root, limits)
                                                      : propertylist::encodeXML(root, limits);
    if (bytes && bytes->size() > limits.bytes)
        return propertylist::fault(
            PropertyListFault::tooLarge, fmt::format("more than {} bytes", limits.bytes));
    return bytes;
}

Result<Value> decodePropertyList(std::string_view bytes, const PropertyListLimits& limits)
{
    const auto format = propertyListFormatOf(bytes);
    if (!format)
        return propertylist::fault(PropertyListFault::unknownFormat, "not a property list");
    if (bytes.size() > limits.bytes)
        return propertylist::fault(
            PropertyListFault::tooLarge, fmt::format("{} bytes, more than {}", bytes.size(), limits.bytes));
    return *format == PropertyListFormat::binary ? propertylist::decodeBinary(bytes, limits)
                                                 : propertylist::decodeXML(bytes, limits);
}

std::optional<PropertyListFormat> propertyListFormatOf(std::string_view bytes)
{
    if (bytes.starts_with("bplist"))
        return PropertyListFormat::binary;
    // XML may be UTF-16 or start with a mark: what counts is that the first visible character is "<".
    const auto first = bytes.find_first_not_of(std::string_view("\xEF\xBB\xBF\xFE\xFF\0 \t\r\n", 10));
    if (first != std::string_view::npos && bytes[first] == '<')
        return PropertyListFormat::xml;
    return std::nullopt;
}

} // namespace platform
