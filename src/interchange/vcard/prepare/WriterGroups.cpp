// What lines say of others in their group, and what cards say of groups of people.
#include "interchange/vcard/prepare/Writer.h"

#include "interchange/vcard/prepare/Ascii.h"

#include <algorithm>
#include <charconv>
#include <map>

namespace vcard::prepare {

namespace {

/// The reader looks for no label of this old form of an address.
constexpr std::string_view kAddressWithoutGroup = "ADD";

/// The number of a group like those that are made here: "item12"; 0 for another.
std::uint32_t itemNumber(std::string_view group)
{
    constexpr std::string_view item = "item";
    constexpr std::size_t mostDigits = 9;
    if (!startsInAnyCase(group, item) || group.size() > item.size() + mostDigits)
        return 0;
    std::uint32_t number = 0;
    const auto end = group.data() + group.size();
    const auto [read, error] = std::from_chars(group.data() + item.size(), end, number);
    return error == std::errc() && read == end ? number : 0;
}

/// The values of a canonical list, between bare commas, without those that are empty.
std::vector<std::string> valuesOfList(std::string_view canonical)
{
    std::vector<std::string> values;
    for (std::size_t start = 0, at = 0; at <= canonical.size(); ++at) {
        if (at < canonical.size() && canonical[at] == '\\') {
            ++at;
        } else if (at == canonical.size() || canonical[at] == ',') {
            if (const auto value = trimmed(canonical.substr(start, at - start)); !value.empty())
                values.push_back(plainText(value));
            start = at + 1;
        }
    }
    return values;
}

} // namespace

// ---- groups of lines

void CardWriter::writeLabel()
{
    if (!_header->hasGroup)
        return carryText(Finding::noPlace);
    beginLineWithoutTypes(nullptr, kLabelName);
    appendValue(_lines.text(), value(), Shape::onePart, escapes());
    if (_lines.begunValue().empty()) {
        _lines.giveUp();
        return tell(Finding::emptyValue, name());
    }
    _labels.push_back(_lines.keep());
}

void CardWriter::writeCountryCode(const Row& row)
{
    if (!_header->hasGroup)
        return tell(Finding::binary, name());
    beginLine(row);
    appendValue(_lines.text(), value(), Shape::onePart, escapes());
    if (_lines.begunValue().empty()) {
        _lines.giveUp();
        return tell(Finding::emptyValue, name());
    }
    _codes.push_back(_lines.keep());
}

void CardWriter::finishItems()
{
    if (!_labels.empty())
        dropUnusedLabels();
    addCountryCodes();
    addLabels();
}

/// A group has one label, and a label needs an entry; another one would be read by nobody. That of an empty
/// entry says nothing.
void CardWriter::dropUnusedLabels()
{
    std::unordered_set<std::string_view> used, labelled;
    for (const auto& line : _lines.lines())
        if (line.entries != Entries::none && line.row->name != kAddressWithoutGroup)
            used.insert(line.group);
    for (const auto label : _labels) {
        auto& line = _lines.lines()[label];
        if (used.contains(line.group) && labelled.insert(line.group).second)
            continue;
        line.isGone = true;
        if (_emptied.contains(line.group) && !used.contains(line.group))
            tell(Finding::emptyValue, kLabelName);
        else
            carry("X-LABEL", _lines.valueOf(line), Finding::noPlace);
    }
}

void CardWriter::addCountryCodes()
{
    if (_addresses.empty())
        return;
    std::unordered_set<std::string_view> known;
    for (const auto code : _codes)
        known.insert(_lines[code].group);
    for (const auto& [address, place] : _addresses) {
        const auto group = _lines[address].group;
        const auto country = trimmed(_lines.valueOf(_lines[address]).substr(place));
        if (country.empty() || (!group.empty() && known.contains(group)))
            continue;
        const auto code = _countries.codeOf(country);
        if (code.empty())
            continue;
        if (group.empty())
            _lines.lines()[address].item = nextItem();
        else
            known.insert(group);
        writeBehind(address, kCountryCodeName, code);
    }
}

/// Labels of entries that came without one of their own.
void CardWriter::addLabels()
{
    if (_ownLabels.empty())
        return;
    std::unordered_set<std::string_view> labelled;
    for (const auto label : _labels)
        if (!_lines[label].isGone)
            labelled.insert(_lines[label].group);
    for (const auto& [entry, label] : _ownLabels) {
        auto& line = _lines.lines()[entry];
        if (!line.group.empty() && labelled.contains(line.group))
            continue;
        line.group = {};
        line.item = nextItem();
        std::string canonical;
        appendValue(canonical, label, Shape::onePart, Escapes::rfc);
        writeBehind(entry, kLabelName, canonical);
    }
}

/// A line of the same group behind one that is there.
void CardWriter::writeBehind(Index entry, std::string_view name, std::string_view canonical)
{
    _lines.begin(nullptr, _lines[entry].group, name, canonical);
    _lines.keepBehind(entry);
}

/// A number that no group of the card has.
std::uint32_t CardWriter::nextItem()
{
    if (_item == 0)
        for (const auto& line : _lines.lines())
            _item = std::max(_item, itemNumber(line.group));
    return ++_item;
}

// ---- groups of people

void CardWriter::writeCategories()
{
    if (!_wishes.categories)
        return carryText(Finding::noPlace);
    for (auto& name : valuesOfList(canonicalValue()))
        _card->categories.push_back(std::move(name));
}

/// Whether a line says that the card is a group. It may be the last one.
bool CardWriter::isGroup(const RawCard& raw)
{
    Property property;
    for (const auto& line : raw.lines)
        if (property.parse(raw.text(line)) && equalInAnyCase(property.name, "KIND")
            && equalInAnyCase(trimmed(property.value), "group"))
            return true;
    return false;
}

void CardWriter::writeKind()
{
    const auto kind = value();
    if (kind.empty())
        return tell(Finding::emptyValue, name());
    if (equalInAnyCase(kind, "individual"))
        return tell(Finding::bookkeeping, name());
    if (_isGroup)
        return;
    const bool isOrganization = equalInAnyCase(kind, "org");
    _kind = isOrganization ? Kind::organization : Kind::other;
    if (!isOrganization)
        carryText(Finding::noPlace);
}

void CardWriter::writeMember()
{
    if (!_isGroup)
        return carryText(Finding::noPlace);
    if (const auto member = value(); !member.empty())
        _card->group->members.emplace_back(member);
}

/// Gives the group its name. What else the card says has no place in a group.
void CardWriter::finishGroup()
{
    const auto formatted = firstOf("FN");
    if (formatted != CardLines::kNone) {
        _card->group->name = plainText(_lines.valueOf(_lines[formatted]));
        _lines.lines()[formatted].isGone = true;
    }
    if (!_note.empty())
        tell(Finding::binary, "NOTE");
    for (const auto& line : _lines.lines())
        if (!line.isGone)
            tell(Finding::binary, line.row ? line.row->name : kLabelName);
}

} // namespace vcard::prepare
