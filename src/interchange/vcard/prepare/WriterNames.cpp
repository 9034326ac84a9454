// How a card's names are completed once all of its lines are there.
#include "interchange/vcard/prepare/Writer.h"

#include "interchange/vcard/prepare/Ascii.h"
#include "interchange/vcard/prepare/Names.h"

#include <algorithm>
#include <array>

namespace vcard::prepare {

namespace {

bool isOneWord(std::string_view text) { return text.find_first_of(" ,\t\\") == text.npos; }

/// "Dr. Ana Maria Lima" where the name is "Lima;Ana;Maria;Dr.", as most cards have it.
bool isWrittenOut(std::string_view text, std::string_view name)
{
    std::array<std::string_view, 5> parts;
    for (auto& part : parts) {
        part = name.substr(0, name.find(';'));
        name.remove_prefix(std::min(part.size() + 1, name.size()));
    }
    const auto& [last, first, middle, title, suffix] = parts;
    bool isBehindAnother = false;
    for (const auto part : {title, first, middle, last, suffix}) {
        if (part.empty())
            continue;
        if (isBehindAnother && !text.starts_with(' '))
            return false;
        text.remove_prefix(isBehindAnother ? 1 : 0);
        if (!text.starts_with(part))
            return false;
        text.remove_prefix(part.size());
        isBehindAnother = true;
    }
    return text.empty();
}

} // namespace

/// Repeated lines are values of one list: what comes behind the first one waits for the end.
void CardWriter::writeList(const Row& row)
{
    beginLine(row);
    appendValue(_lines.text(), value(), row.shape, escapes());
    joinListValues(_lines.text(), _lines.begun().value);
    if (_lines.begunValue().empty()) {
        _lines.giveUp();
        return tell(Finding::emptyValue, name());
    }
    if (firstOf(row) == CardLines::kNone) {
        keepLine(row, Finding::repeated);
        return;
    }
    _moreOfList.append("\\, ").append(_lines.begunValue());
    _lines.giveUp();
}

void CardWriter::finishList()
{
    if (_moreOfList.empty())
        return;
    const auto first = firstOf("NICKNAME");
    const std::string all(_lines.valueOf(_lines[first]));
    _lines.begin(_lines[first].row, _lines[first].group, "NICKNAME", all + _moreOfList);
    _lines.keepInsteadOf(first);
}

/// FN gives what the name lacks. What it says beyond the name has a place as the nickname only; an
/// organization needs no name.
void CardWriter::finishNames()
{
    finishList();
    if (_kind == Kind::organization)
        finishOrganization();
    const auto formatted = firstOf("FN");
    if (formatted == CardLines::kNone)
        return;
    const auto text = _lines.valueOf(_lines[formatted]);
    const auto name = firstOf("N");
    if (name != CardLines::kNone && isWrittenOut(text, _lines.valueOf(_lines[name])))
        return;
    const bool isCompany = firstOf("X-ZRSHOWAS") != CardLines::kNone;
    const bool isOrganization =
        firstOf("ORG") != CardLines::kNone && isSaidBy(text, _lines.valueOf(_lines[firstOf("ORG")]));
    const bool needsName = name == CardLines::kNone && !isOrganization && !isCompany;
    if (needsName)
        return makeName(formatted, _kind != Kind::person);
    std::string said;
    for (const auto line : {name, firstOf("ORG"), firstOf("NICKNAME")})
        if (line != CardLines::kNone)
            said.append(_lines.valueOf(_lines[line])).append(";");
    if (!isSaidBy(text, said) && !isAddress(text))
        makeNickname(formatted);
}

/// The reader takes a single word as the last name by itself, unless there is an organization.
void CardWriter::makeName(Index formatted, bool whole)
{
    const std::string text(_lines.valueOf(_lines[formatted]));
    if (isOneWord(text) && firstOf("ORG") == CardLines::kNone)
        return;
    auto name = whole ? text + ";;;;" : nameFromText(text);
    if (whole)
        joinNameValues(name, 0);
    if (isEmptyValue(name, Shape::fields))
        return;
    _lines.begin(rowOf("N", _raw->version), {}, "N", name);
    _lines.keepBehind(formatted);
    tell(Finding::nameTaken, "FN");
}

/// Whom nobody named is shown by an address, which stands in a line of its own.
bool CardWriter::isAddress(std::string_view text) const
{
    const auto& lines = _lines.lines();
    return std::any_of(lines.begin(), lines.end(), [&](const auto& line) {
        return (line.entries == Entries::emails || line.entries == Entries::aims)
            && _lines.valueOf(line) == text;
    });
}

/// FN goes to the nickname, or to the note where there is one.
void CardWriter::makeNickname(Index formatted)
{
    std::string text(_lines.valueOf(_lines[formatted]));
    if (firstOf("NICKNAME") != CardLines::kNone) {
        _lines.lines()[formatted].isGone = true;
        return carry("FN", text, Finding::repeated);
    }
    joinListValues(text, 0);
    _lines.begin(rowOf("NICKNAME", _raw->version), {}, "NICKNAME", text);
    _lines.keepBehind(formatted);
    tell(Finding::nicknameTaken, "FN");
}

/// It is shown as a company, under its own name. One that has a name like a person's needs no other.
void CardWriter::finishOrganization()
{
    if (firstOf("X-ZRSHOWAS") == CardLines::kNone) {
        const auto& row = *rowOf("X-ZRSHOWAS", _raw->version);
        _lines.begin(&row, {}, kShowAsName, "COMPANY");
        _first[indexOf(row)] = _lines.keep();
    }
    const auto formatted = firstOf("FN");
    if (firstOf("ORG") != CardLines::kNone || firstOf("N") != CardLines::kNone
        || formatted == CardLines::kNone)
        return;
    const auto& row = *rowOf("ORG", _raw->version);
    const std::string text(_lines.valueOf(_lines[formatted]));
    _lines.begin(&row, {}, "ORG", text);
    _first[indexOf(row)] = _lines.keepBehind(formatted);
}

} // namespace vcard::prepare
