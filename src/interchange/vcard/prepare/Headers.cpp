// How the part of a line up to its colon is read, and remembered.
#include "interchange/vcard/prepare/Headers.h"

#include "interchange/vcard/prepare/Ascii.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace vcard::prepare {

namespace {

bool isType(std::string_view text)
{
    return std::all_of(
        text.begin(), text.end(), [](char c) { return isNameCharacter(c) || c == '/' || c == '+'; });
}

/// Bare words of vCard 2.1 that say how the value is packed, not what it is.
bool isTransferWord(std::string_view word)
{
    for (const std::string_view transfer : {"QUOTED-PRINTABLE", "BASE64", "8BIT", "7BIT"})
        if (equalInAnyCase(word, transfer))
            return true;
    return false;
}

constexpr std::pair<std::string_view, std::string_view> kSameTypes[] = {{"MOBILE", "CELL"},
    {"MAIN-NUMBER", "MAIN"}, {"BUSINESS", "WORK"}, {"PRIVATE", "HOME"}, {"PERSONAL", "HOME"}};

/// The word that the reader knows for a type, or the type.
std::string_view knownType(std::string_view type)
{
    for (const auto& [written, read] : kSameTypes)
        if (equalInAnyCase(type, written))
            return read;
    return type;
}

/// What RFC 6350 §5.3 lets PREF be; anything else is no preference.
std::uint8_t rankOf(std::string_view value)
{
    unsigned rank = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), rank);
    const bool isRank =
        error == std::errc() && end == value.data() + value.size() && rank >= 1 && rank <= 100;
    return isRank ? static_cast<std::uint8_t>(rank) : kNoRank;
}

} // namespace

void Header::read(std::string_view written, Version version)
{
    text = written;
    property.parse(text);
    isNamed = isName(property.name);
    hasGroup = isName(property.group);
    row = rowOf(property.name, version);
    altid = property.parameter(ParameterName::altid);
    types.clear();
    unreadableTypes.clear();
    rankOfParameter = rank = kNoRank;
    readParameters();
    rank = std::min(rank, rankOfParameter);
    canonical.assign(property.name).append(types).append(":");
}

void Header::readParameters()
{
    for (const auto& parameter : property.parameters) {
        if (parameter.known == ParameterName::pref)
            rankOfParameter = std::min(rankOfParameter, rankOf(unquoted(parameter.value)));
        const bool bare = parameter.known == ParameterName::bare;
        if (bare ? !isTransferWord(parameter.value) : parameter.known == ParameterName::type)
            readTypes(unquoted(parameter.value));
    }
}

void Header::readTypes(std::string_view list)
{
    for (bool open = false; !list.empty();) {
        const auto comma = std::min(list.find(','), list.size());
        readType(unquoted(trimmed(list.substr(0, comma))), open);
        list.remove_prefix(std::min(comma + 1, list.size()));
    }
}

void Header::readType(std::string_view type, bool& open)
{
    // Some writers repeat the name within the list.
    if (startsInAnyCase(type, "TYPE="))
        type = trimmed(type.substr(5));
    if (type.empty())
        return;
    if (!isType(type)) {
        unreadableTypes.push_back(type);
        return;
    }
    // The type stands above a rank, since it is what stays in the canonical line.
    if (equalInAnyCase(type, "PREF"))
        rank = 0;
    types.append(open ? "," : ";TYPE=").append(knownType(type));
    open = true;
}

void Headers::beginCard(Version version)
{
    auto& known = _known[static_cast<std::size_t>(version)];
    if (version == _version && known.size() < kMostRemembered)
        return;
    _version = version;
    _last = nullptr;
    if (known.size() >= kMostRemembered)
        known.clear();
}

const Header* Headers::of(std::string_view line)
{
    if (_last && _last->follower && line.starts_with(_last->follower->text))
        return _last = _last->follower;
    const auto colon = valueColon(line);
    if (colon == line.npos)
        return nullptr;
    auto* const before = std::exchange(_last, remembered(line.substr(0, colon + 1)));
    if (!_last) {
        _unknown.read(line.substr(0, colon + 1), _version);
        return &_unknown;
    }
    if (before)
        before->follower = _last;
    return _last;
}

/// The header, or null where it is not remembered. A quote that is left open makes the colon that ends it
/// depend on the rest of the line.
Header* Headers::remembered(std::string_view text)
{
    auto& known = _known[static_cast<std::size_t>(_version)];
    if (const auto found = known.find(text); found != known.end())
        return &found->second;
    if (text.size() > kLongestRemembered || known.size() >= kMostRemembered
        || std::count(text.begin(), text.end(), '"') % 2 != 0)
        return nullptr;
    const auto added = known.try_emplace(std::string(text)).first;
    added->second.read(added->first, _version);
    return &added->second;
}

} // namespace vcard::prepare
