// Values without end for tests that compare two answers: the same seed gives the same values.
#pragma once

#include "platform/value/Value.h"

#include <fmt/format.h>

#include <bit>
#include <iterator>
#include <random>

namespace platform {

class RandomValues {
public:
    explicit RandomValues(std::uint64_t seed) : _engine(seed) { }

    /// Of any kind that a property list holds, in both forms: dates are whole seconds, texts can stand in
    /// XML.
    Value next(int depth = 4)
    {
        switch (below(depth > 0 ? 9 : 7)) {
        case 0:
            return below(2) == 0;
        case 1:
            return static_cast<std::int64_t>(_engine() >> below(64)) * (below(2) ? 1 : -1);
        case 2:
            return std::uint64_t(_engine() >> below(64));
        case 3:
            return std::uniform_real_distribution(-1e9, 1e9)(_engine);
        case 4:
            return text();
        case 5:
            return Value::data(bytes());
        case 6:
            // Years 2 to 9999.
            return Date{
                static_cast<double>(static_cast<std::int64_t>(below(315'000'000'000)) - 62'100'000'000)};
        case 7:
            return array(depth - 1);
        default:
            return dictionary(depth - 1);
        }
    }

    std::uint64_t below(std::uint64_t end) { return _engine() % end; }

    std::string text()
    {
        static constexpr const char* pieces[] = {"a", "Z", "0", " ", "\n", "\t", "&", "<", ">", "\"", "]]>",
            "é", "ß", "Ω", "漢", "\u2028", "\uFFFD", "\U0001F600", "\U0010FFFD"};
        std::string text;
        for (auto length = below(20); length > 0; --length)
            text += pieces[below(below(2) ? std::size(pieces) : 4)];
        return text;
    }

private:
    std::string bytes()
    {
        std::string bytes(below(below(8) ? 20 : 300), '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(_engine());
        return bytes;
    }
    Value array(int depth)
    {
        std::vector<Value> elements;
        for (auto count = below(below(8) ? 6 : 40); count > 0; --count)
            elements.push_back(next(depth));
        return Value::array(std::move(elements));
    }
    Value dictionary(int depth)
    {
        std::vector<Dictionary::Entry> entries;
        for (auto count = below(below(8) ? 6 : 40); count > 0; --count)
            entries.emplace_back(text(), next(depth));
        return Value::dictionary(std::move(entries));
    }

    std::mt19937_64 _engine;
};

/// Text that tells kinds apart where equality does not: whole from floating, boolean from whole, and every
/// bit.
inline std::string spelled(const Value& value)
{
    const auto hex = [](std::string_view bytes) {
        std::string digits;
        for (const char byte : bytes)
            fmt::format_to(std::back_inserter(digits), "{:02x}", static_cast<unsigned char>(byte));
        return digits;
    };
    switch (value.kind()) {
    case Value::Kind::boolean:
        return value.asBoolean() ? "b1" : "b0";
    case Value::Kind::integer:
        return "i" + value.description();
    case Value::Kind::real:
        return fmt::format("r{:016x}", std::bit_cast<std::uint64_t>(value.asReal()));
    case Value::Kind::date:
        return fmt::format("t{:.0f}", value.asDate().seconds);
    case Value::Kind::string:
        return "s" + hex(value.asText());
    case Value::Kind::data:
        return "d" + hex(value.asBytes());
    default:
        break;
    }
    std::string text;
    for (const Value& element : value.asArray())
        text += (text.empty() ? "" : ",") + spelled(element);
    if (value.isArray())
        return "(" + text + ")";
    if (!value.isDictionary())
        return value.description();
    for (const auto& [key, element] : value.asDictionary()->entries())
        text += (text.empty() ? "s" : ",s") + hex(key) + "=" + spelled(element);
    return "{" + text + "}";
}

} // namespace platform
