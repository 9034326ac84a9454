// The words of each finding, and the bounds of a report.
#include "interchange/vcard/prepare/Report.h"

#include "platform/text/Utf.h"

#include <fmt/format.h>

#include <algorithm>

namespace vcard::prepare {

namespace {

struct Words {
    Finding finding;
    Action action;
    std::string_view text;
};

constexpr auto kWords = std::to_array<Words>({
    {Finding::cardCutOff, Action::refused, "the data end inside the card"},
    {Finding::cardWithoutBegin, Action::refused, "BEGIN:VCARD is missing"},
    {Finding::cardTooLarge, Action::refused, "the card is too large"},
    {Finding::cardEmpty, Action::refused, "nothing in the card can be kept"},
    {Finding::endMissing, Action::repaired, "END:VCARD is missing"},
    {Finding::versionMissing, Action::repaired, "VERSION is missing, read as 3.0"},
    {Finding::versionUnknown, Action::repaired, "VERSION is unknown, read as 3.0"},
    {Finding::charsetGuessed, Action::repaired, "the character set is not named, read as"},
    {Finding::textOutside, Action::dropped, "text outside cards"},
    {Finding::nestedCard, Action::dropped, "a card inside the card"},
    {Finding::lineWithoutColon, Action::dropped, "a line without a colon"},
    {Finding::nameUnreadable, Action::keptInNote, "a line that begins with no property name"},
    {Finding::typeUnreadable, Action::dropped, "a type that is no word"},
    {Finding::emptyValue, Action::dropped, "is empty"},
    {Finding::noPlace, Action::keptInNote, "has no place of its own"},
    {Finding::bookkeeping, Action::dropped, "says nothing about the person"},
    {Finding::binary, Action::dropped, "has no place"},
    {Finding::repeated, Action::keptInNote, "stands in the card more than once"},
    {Finding::surplusFields, Action::keptInNote, "has more fields than there are places"},
    {Finding::dateUnreadable, Action::keptInNote, "is no calendar day"},
    {Finding::timeOfDay, Action::repaired, "has a time of day, kept as a day"},
    {Finding::pictureDamaged, Action::repaired, "has characters that are not base64"},
    {Finding::pictureByReference, Action::keptInNote, "is not in the card, only its address"},
    {Finding::pictureUnreadable, Action::dropped, "holds no picture that can be read"},
    {Finding::nameTaken, Action::repaired, "is the name, as N is missing or empty"},
    {Finding::nicknameTaken, Action::repaired, "differs from the name, kept as the nickname"},
    {Finding::dateWithoutYear, Action::keptInNote, "is no whole date"},
    {Finding::alternative, Action::keptInNote, "says in another way what another line says"},
    {Finding::memberUnknown, Action::dropped, "is nobody of this file"},
});

constexpr bool isTableSound()
{
    for (std::size_t i = 0; i < kWords.size(); ++i)
        if (kWords[i].finding != static_cast<Finding>(i))
            return false;
    return kWords.size() == kFindings;
}
static_assert(isTableSound(), "one row for each finding, in its order");

const Words& wordsOf(Finding finding) { return kWords[static_cast<std::size_t>(finding)]; }

/// Printable, and short enough for one line of a report.
std::string printable(std::string_view subject)
{
    auto text = platform::repairedUTF8(subject.substr(0, Report::kMaximumSubject));
    if (subject.size() > Report::kMaximumSubject)
        text += "…";
    std::replace_if(
        text.begin(), text.end(), [](char c) { return (c >= 0 && c < 0x20) || c == 0x7F; }, ' ');
    return text;
}

} // namespace

std::string_view textOf(Finding finding) { return wordsOf(finding).text; }

Action actionOf(Finding finding) { return wordsOf(finding).action; }

std::string_view textOf(Action action)
{
    constexpr std::array<std::string_view, 4> texts{"repaired", "kept in the note", "dropped", "refused"};
    return texts[static_cast<std::size_t>(action)];
}

void Report::add(std::size_t card, std::size_t line, Finding finding, std::string_view subject)
{
    if (_counts[static_cast<std::size_t>(finding)]++ < kMaximumEntries)
        _entries.push_back({card, line, finding, printable(subject)});
}

std::size_t Report::count(Action action) const
{
    std::size_t sum = 0;
    for (const auto& words : kWords)
        sum += words.action == action ? count(words.finding) : 0;
    return sum;
}

std::string Report::text(const Entry& entry) const
{
    const auto place = entry.card ? fmt::format("card {}, line {}", entry.card, entry.line)
                                  : fmt::format("line {}", entry.line);
    const auto& words = wordsOf(entry.finding);
    // A property is the subject of its sentence; text and names of sets come behind it.
    const bool leads = entry.finding >= Finding::emptyValue;
    const auto what = entry.subject.empty() ? std::string(words.text)
        : leads                             ? fmt::format("{} {}", entry.subject, words.text)
                                            : fmt::format("{}: {}", words.text, entry.subject);
    return fmt::format("{}: {}: {} ({})", _file, place, what, textOf(words.action));
}

std::string Report::text() const
{
    std::string all;
    for (const auto& entry : _entries)
        all.append(text(entry)).append("\n");
    for (const auto& words : kWords)
        if (const auto total = count(words.finding); total > kMaximumEntries)
            all += fmt::format(
                "{}: {} more: {} ({})\n", _file, total - kMaximumEntries, words.text, textOf(words.action));
    return all;
}

} // namespace vcard::prepare
