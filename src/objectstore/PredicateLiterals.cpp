// Constants as the store reads them inside one bound value: JSON lists, full-text queries, prefixes.
#include "objectstore/PredicateLiterals.h"

#include <fmt/format.h>
#include <iterator>

namespace objectstore {

using platform::Value;

namespace {

/// Each is one more list to intersect, and a few are selective enough.
constexpr std::size_t kMostTrigrams = 12;

/// Where each character of UTF-8 starts, and the end.
std::vector<std::size_t> characterStarts(std::string_view text)
{
    std::vector<std::size_t> starts;
    for (std::size_t at = 0; at < text.size(); ++at)
        if ((static_cast<unsigned char>(text[at]) & 0xc0) != 0x80)
            starts.push_back(at);
    starts.push_back(text.size());
    return starts;
}

void appendJSONText(std::string& json, std::string_view text)
{
    json += '"';
    for (const char character : text) {
        if (character == '"' || character == '\\')
            json.append({'\\', character});
        else if (static_cast<unsigned char>(character) < 0x20)
            fmt::format_to(std::back_inserter(json), "\\u{:04x}", static_cast<int>(character));
        else
            json += character;
    }
    json += '"';
}

} // namespace

std::size_t characterCount(std::string_view text) { return characterStarts(text).size() - 1; }

bool holdsNul(std::string_view text) { return text.find('\0') != std::string_view::npos; }

// UTF-8 has no byte 0xff, so the last one can go up.
std::string behindAllWithPrefix(std::string prefix)
{
    prefix.back() = static_cast<char>(prefix.back() + 1);
    return prefix;
}

std::string trigramQuery(std::string_view text)
{
    const auto starts = characterStarts(text);
    const std::size_t count = starts.size() - kTrigram;
    const std::size_t step = (count + kMostTrigrams - 1) / kMostTrigrams;
    std::string query;
    for (std::size_t i = 0; i < count; i += step) {
        query += query.empty() ? "\"" : " AND \"";
        for (const char character : text.substr(starts[i], starts[i + kTrigram] - starts[i]))
            query.append(character == '"' ? 2 : 1, character);
        query += '"';
    }
    return query;
}

std::optional<std::string> asJSON(const std::vector<Value>& elements)
{
    std::string json = "[";
    for (const auto& element : elements) {
        json += json.size() > 1 ? "," : "";
        if (element.isString() && !holdsNul(element.asText()))
            appendJSONText(json, element.asText());
        else if (element.isNumber() && !element.isReal() && !element.isWideUnsigned())
            json += std::to_string(element.asInteger());
        else
            return std::nullopt;
    }
    return json + "]";
}

} // namespace objectstore
