// How a logical line is taken apart, and written again.
#include "interchange/vcard/prepare/Property.h"

#include "interchange/vcard/prepare/Ascii.h"

#include <utility>

namespace vcard::prepare {

namespace {

/// The first of `text` up to a separator outside quotes; takes it and the separator away from `text`.
std::string_view cut(std::string_view& text, char separator)
{
    std::size_t end = text.find(separator);
    if (const auto quote = end == text.npos ? end : text.substr(0, end).find('"'); quote != text.npos) {
        bool quoted = false;
        std::size_t at = quote;
        for (; at < text.size() && (quoted || text[at] != separator); ++at)
            quoted ^= text[at] == '"';
        if (!quoted)
            end = at < text.size() ? at : text.npos;
    }
    const auto first = text.substr(0, end);
    text.remove_prefix(end == text.npos ? text.size() : end + 1);
    return first;
}

constexpr std::pair<std::string_view, ParameterName> kParameterNames[] = {{"TYPE", ParameterName::type},
    {"CHARSET", ParameterName::charset}, {"ENCODING", ParameterName::encoding}, {"PREF", ParameterName::pref},
    {"ALTID", ParameterName::altid}, {"LABEL", ParameterName::label}, {"GEO", ParameterName::geo},
    {"TZ", ParameterName::tz}, {"SORT-AS", ParameterName::sortAs}, {"VALUE", ParameterName::value}};

ParameterName parameterNameOf(std::string_view name)
{
    if (name.empty())
        return ParameterName::bare;
    for (const auto& [known, meaning] : kParameterNames)
        if (equalInAnyCase(name, known))
            return meaning;
    return ParameterName::other;
}

Parameter parameterOf(std::string_view written)
{
    const auto equals = written.find('=');
    if (equals == written.npos)
        return {{}, trimmed(written)};
    const auto name = trimmed(written.substr(0, equals));
    return {name, trimmed(written.substr(equals + 1)), parameterNameOf(name)};
}

Transfer transferOf(const Parameter& parameter)
{
    const bool bare = parameter.known == ParameterName::bare;
    if (!bare && parameter.known != ParameterName::encoding)
        return Transfer::plain;
    const auto word = unquoted(parameter.value);
    if (equalInAnyCase(word, "QUOTED-PRINTABLE"))
        return Transfer::quotedPrintable;
    if (equalInAnyCase(word, "BASE64") || (!bare && equalInAnyCase(word, "B")))
        return Transfer::base64;
    return Transfer::plain;
}

} // namespace

std::string_view unquoted(std::string_view value)
{
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
        return trimmed(value.substr(1, value.size() - 2));
    return value;
}

std::size_t valueColon(std::string_view line)
{
    const auto colon = line.find(':');
    if (colon == line.npos || line.substr(0, colon).find('"') == line.npos)
        return colon;
    bool quoted = false;
    for (std::size_t at = 0; at < line.size(); ++at) {
        quoted ^= line[at] == '"';
        if (line[at] == ':' && !quoted)
            return at;
    }
    return colon;
}

Transfer declaredTransfer(std::string_view header)
{
    cut(header, ';');
    while (!header.empty())
        if (const auto transfer = transferOf(parameterOf(cut(header, ';'))); transfer != Transfer::plain)
            return transfer;
    return Transfer::plain;
}

bool Property::parse(std::string_view line)
{
    const auto colon = valueColon(line);
    if (colon == line.npos)
        return false;
    parameters.clear();
    transfer = Transfer::plain;
    charset = group = {};
    value = line.substr(colon + 1);
    auto header = line.substr(0, colon);
    name = trimmed(cut(header, ';'));
    if (const auto dot = name.rfind('.'); dot != name.npos) {
        group = trimmed(name.substr(0, dot));
        name = trimmed(name.substr(dot + 1));
    }
    while (!header.empty()) {
        const auto parameter = parameterOf(cut(header, ';'));
        if (parameter.name.empty() && parameter.value.empty())
            continue;
        if (transfer == Transfer::plain)
            transfer = transferOf(parameter);
        if (parameter.known == ParameterName::charset)
            charset = unquoted(parameter.value);
        parameters.push_back(parameter);
    }
    return true;
}

std::string_view Property::parameter(ParameterName parameterName) const
{
    for (const auto& parameter : parameters)
        if (parameter.known == parameterName)
            return unquoted(parameter.value);
    return {};
}

std::string Property::text() const
{
    std::string text(group);
    if (!group.empty())
        text += '.';
    text += name;
    for (const auto& parameter : parameters) {
        text += ';';
        if (!parameter.name.empty())
            text.append(parameter.name).append("=");
        text += parameter.value;
    }
    return text.append(":").append(value);
}

std::string decodedCarets(std::string_view value)
{
    std::string text;
    for (std::size_t at = 0; at < value.size(); ++at) {
        const char next = value[at] == '^' && at + 1 < value.size() ? value[at + 1] : '\0';
        const char meant = next == 'n' ? '\n' : next == '\'' ? '"' : next == '^' ? '^' : '\0';
        text += meant ? meant : value[at];
        at += meant != '\0';
    }
    return text;
}

} // namespace vcard::prepare
