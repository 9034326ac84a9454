// How a card is written for an editor and read back.
#include "EditableCard.h"

#include "core/ZRConstants.h"
#include "core/ZRPerson.h"
#include "interchange/import/ZRvCardController.h"
#include "platform/files/Preferences.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <set>

using platform::Value;
using vcard::prepare::Action;
using vcard::prepare::Finding;
using vcard::prepare::Report;

namespace {

constexpr std::array notEdited = {zr::kZRUIDProperty, zr::kZRCreationDateProperty,
    zr::kZRModificationDateProperty, zr::kZRRemoteLocationProperty, zr::kZRHomePageProperty};

constexpr std::string_view emptyCard = R"(BEGIN:VCARD
VERSION:3.0
N:;;;;
NICKNAME:
ORG:;
TITLE:
EMAIL;type=INTERNET;type=HOME:
EMAIL;type=INTERNET;type=WORK:
TEL;type=CELL:
TEL;type=HOME:
TEL;type=WORK:
ADR;type=HOME:;;;;;;
URL;type=HOME:
BDAY;value=date:
NOTE:
END:VCARD
)";

/// "item3." of a line in an item group; empty outside.
std::string_view groupOf(std::string_view line)
{
    const auto end = line.find_first_of(".:;");
    return end < line.size() && line[end] == '.' ? line.substr(0, end + 1) : std::string_view();
}

bool isNamed(std::string_view line, std::string_view name)
{
    line.remove_prefix(groupOf(line).size());
    return line.starts_with(name) && line.size() > name.size()
        && (line[name.size()] == ':' || line[name.size()] == ';');
}

std::vector<std::string_view> linesOf(std::string_view text)
{
    std::vector<std::string_view> lines;
    for (std::size_t from = 0; from < text.size();) {
        const auto end = std::min(text.find("\r\n", from), text.size());
        lines.push_back(text.substr(from, end - from));
        from = end + 2;
    }
    return lines;
}

// The names of groups are written as they are, line ends and all, and stand last: so they go with all that is
// behind them.
std::string withoutIdleLines(std::string_view card)
{
    constexpr std::string_view end = "END:VCARD";
    card = card.substr(0, std::min(card.find("\r\nCATEGORIES:"), card.find("\r\nX-ZRUID:")));
    std::string text;
    std::string_view dropped;
    for (const auto line : linesOf(card)) {
        const auto group = groupOf(line);
        if (isNamed(line, "FN") || isNamed(line, "X-YAHOO-ID"))
            dropped = group;
        else if (group.empty() || group != dropped)
            text.append(line).append("\n");
    }
    return text.append(end).append("\n");
}

/// What would be lost, or cannot mean what was typed.
bool isMistake(Finding finding)
{
    if (finding == Finding::dateUnreadable || finding == Finding::nameUnreadable)
        return true;
    return actionOf(finding) == Action::dropped && finding != Finding::emptyValue
        && finding != Finding::bookkeeping;
}

[[noreturn]] void refuse(const std::string& text) { throw Failure(exitStatus::refused, text); }

/// All that a text holds: its cards, and what was found out about it.
struct TextRead {
    std::vector<CardProperties> cards;
    ZRvCardImport result;
};

/// An import puts the preferred entry first. Here the order of the lines is that of the entries, and the
/// primary entry is known by itself.
std::string withoutPreferences(std::string text)
{
    constexpr std::string_view preference = ";type=pref";
    for (std::size_t at = 0; (at = text.find(preference, at)) != text.npos;) {
        const auto line = text.rfind('\n', at) + 1;
        if (text.find(':', line) > at)
            text.erase(at, preference.size());
        else
            at += preference.size();
    }
    return text;
}

TextRead readText(const std::string& text)
{
    TextRead read;
    ZRvCardController controller;
    controller.setOutcome(ZRvCardController::Outcome::readOnly);
    controller.cardWasRead = [&](const ZRvCardController::CardRead& card) {
        if (card.person)
            read.cards.push_back(propertiesOf(*card.person));
    };
    controller.importVCardData(withoutPreferences(text));
    read.result = controller.result();
    return read;
}

/// The findings of `read` that are not in `before`, in the order of their lines.
std::vector<Report::Entry> newFindings(const TextRead& read, const TextRead& before)
{
    std::multiset<std::pair<Finding, std::string>> known;
    for (const auto& report : before.result.reports)
        for (const auto& entry : report.entries())
            known.emplace(entry.finding, entry.subject);
    std::vector<Report::Entry> found;
    for (const auto& report : read.result.reports)
        for (const auto& entry : report.entries())
            if (const auto at = known.find({entry.finding, entry.subject}); at != known.end())
                known.erase(at);
            else
                found.push_back(entry);
    return found;
}

void judge(const Report::Entry& entry)
{
    const std::string what = fmt::format("line {}: {}: {}", entry.line, entry.subject, textOf(entry.finding));
    if (isMistake(entry.finding))
        refuse(what);
    if (actionOf(entry.finding) == Action::keptInNote)
        complain(what + " (kept in the note)");
}

} // namespace

CardProperties propertiesOf(ZRPerson& person)
{
    CardProperties properties;
    for (const auto& name : ZRRecord::propertiesWithRoster(person.recordClass(), person.nts_Roster()))
        if (std::ranges::find(notEdited, name) == notEdited.end())
            if (Value value = person.valueForProperty(name); !value.isNothing())
                properties.emplace(name, std::move(value));
    return properties;
}

std::string editableText(ZRPerson& person)
{
    // What Me keeps from others is not kept from the user.
    auto& preferences = platform::Preferences::shared();
    preferences.setArgument("ZRPrivateVCardFieldsEnabled", Value(false));
    std::string card;
    person._appendVCardRepresentation(card, kZRVCardWithNote);
    preferences.setArgument("ZRPrivateVCardFieldsEnabled", {});
    return withoutIdleLines(card);
}

std::string emptyCardText() { return std::string(emptyCard); }

CardProperties propertiesOfGivenText(const std::string& text)
{
    TextRead read = readText(text);
    return read.cards.empty() ? CardProperties() : std::move(read.cards.front());
}

CardProperties propertiesOfText(const std::string& text, const std::string& before)
{
    TextRead read = readText(text);
    for (const auto& refusal : read.result.refusals)
        refuse(fmt::format("line {}: {}{}{}", refusal.line, refusal.firstLine,
            refusal.firstLine.empty() ? "" : ": ", refusal.reason));
    for (const auto& entry : newFindings(read, readText(before)))
        judge(entry);
    if (read.cards.size() != 1)
        refuse(fmt::format("the text holds {} cards, and one is wanted", read.cards.size()));
    return std::move(read.cards.front());
}
