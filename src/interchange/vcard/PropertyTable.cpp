// Which handler a property has, and what comes of the others.
#include "interchange/vcard/ZRVCardParser+State.h"

#include "core/ZRConstants.h"
#include "platform/run/Log.h"

#include <algorithm>
#include <iterator>

using namespace vcard;

namespace {

using State = ZRVCardParser::State;

/// What is done with the rest of a line behind its handler.
enum class Then : std::uint8_t { nothing, generic };

/// One property: its handler, the line that is logged when it fails, and what follows.
struct Row {
    std::string_view name;
    bool (*handle)(State&);
    std::string_view message = {};
    Then then = Then::nothing;
};

/// Grouped by the length of the name, shortest first.
constexpr Row kRows[] = {
    {"N", [](State& s) { return s.parseN(); }, "Malformed N"},
    {"FN", [](State& s) { return s.parseFN(); }},
    {"TEL", [](State& s) { return s.parseEntries(Pending::phones, s.phoneLabel()); }, "Malformed TEL"},
    {"ADR", [](State& s) { return s.parseADR(); }, "Malformed ADR"},
    {"ORG", [](State& s) { return s.parseOrganization(); }, "Malformed ORG"},
    {"URL", [](State& s) { return s.parseURL(); }},
    {"ADD", [](State& s) { return s.parseADD(); }, "Malformed ADD"},
    {"NOTE", [](State& s) { return s.parseNote(); }},
    {"BDAY", [](State& s) { return s.parseBirthday(); }, "Malformed BDAY"},
    {"EMAIL", [](State& s) { return s.parseEntries(Pending::emails, s.genericLabel()); }, "Malformed EMAIL"},
    {"TITLE", [](State& s) { return s.storeTextUnlessEmpty(zr::kZRJobTitleProperty); }},
    {"X-AIM", [](State& s) { return s.addIMValueTo(Pending::aims); }, "Malformed X-AIM"},
    {"X-MSN", [](State& s) { return s.addIMValueTo(Pending::msns); }, "Malformed X-MSN"},
    {"X-ICQ", [](State& s) { return s.addIMValueTo(Pending::icqs); }, "Malformed X-ICQ"},
    {"PHOTO", [](State& s) { return s.parsePhoto(); }},
    {"CALURI", [](State& s) { return s.parseCalendarURI(); }},
    {"VERSION", [](State& s) { return s.parseVersion(); }, "Malformed VERSION"},
    {"X-ZRUID", [](State& s) { return s.parseUID(); }},
    {"X-ZRADR", [](State& s) { return s.parseExtension(kAddressExtension); }},
    {"X-YAHOO", [](State& s) { return s.addIMValueTo(Pending::yahoos); }, "Malformed X-YAHOO"},
    {"NICKNAME", [](State& s) { return s.parseNickname(); }, "Malformed NICKNAME"},
    {"X-JABBER", [](State& s) { return s.addIMValueTo(Pending::jabbers); }, "Malformed X-JABBER"},
    {"X-ZRDATE", [](State& s) { return s.parseOtherDate(); }, "Malformed ZRDATE"},
    {"X-ZRLabel", [](State& s) { return s.parseExtension(kLabelExtension); }, {}, Then::generic},
    {"X-ZROrder", [](State& s) { return s.parseOrder(); }, {}, Then::generic},
    {"X-ZRPhoto", [](State& s) { return s.parseBuiltInPhoto(); }, {}, Then::generic},
    {"X-ZRShowAs", [](State& s) { return s.parseShowAs(); }, {}, Then::generic},
    {"X-YAHOO-ID", [](State& s) { return s.addIMValueTo(Pending::yahoos); }, "Malformed X-YAHOO-ID"},
    {"X-MAIDENNAME", [](State& s) { return s.storeText(zr::kZRMaidenNameProperty); }, {}, Then::generic},
    {"X-ZRRELATEDNAMES", [](State& s) { return s.parseRelatedName(); }, {}, Then::generic},
    {"X-PHONETIC-LAST-NAME",
        [](State& s) { return s.storeTextUnlessEmpty(zr::kZRLastNamePhoneticProperty); }},
    {"X-PHONETIC-FIRST-NAME",
        [](State& s) { return s.storeTextUnlessEmpty(zr::kZRFirstNamePhoneticProperty); }},
    {"X-PHONETIC-MIDDLE-NAME",
        [](State& s) { return s.storeTextUnlessEmpty(zr::kZRMiddleNamePhoneticProperty); }},
};

constexpr std::size_t kLongestName = kRows[std::size(kRows) - 1].name.size();

static_assert(std::is_sorted(std::begin(kRows), std::end(kRows),
                  [](const Row& a, const Row& b) { return a.name.size() < b.name.size(); }),
    "a lookup takes the rows of one length");

/// Where the rows of each length begin; those of a length end where the next ones begin.
constexpr auto kFirstOfLength = [] {
    std::array<std::uint8_t, kLongestName + 2> first{};
    for (std::size_t length = 0; length < first.size(); ++length)
        while (first[length] < std::size(kRows) && kRows[first[length]].name.size() < length)
            ++first[length];
    return first;
}();

/// A name of one of these lengths that has no row is dropped without a trace; any other goes to the note.
constexpr bool isDropped(std::size_t length)
{
    return length == 1 || length == 2 || length == 4 || length == 7 || length == 8;
}

/// Of no use to a person, so not even in the note.
constexpr std::string_view kIgnored[] = {
    "LOGO", "CATEGORIES", "SOUND", "LABEL", "PRODID", "SORT-STRING", "UID", "REV"};

const Row* rowFor(std::string_view name)
{
    if (name.size() > kLongestName)
        return nullptr;
    for (std::size_t at = kFirstOfLength[name.size()]; at < kFirstOfLength[name.size() + 1]; ++at)
        if (equalInAnyCase(kRows[at].name, name))
            return &kRows[at];
    return nullptr;
}

} // namespace

void ZRVCardParser::State::dispatch()
{
    const Row* row = rowFor(line.name);
    if (!row) {
        if (!isDropped(line.name.size()))
            generic();
        return;
    }
    if (!row->handle(*this))
        platform::log(row->message);
    else if (row->then == Then::generic)
        generic();
}

/// An unknown line is kept as a line of the note.
void ZRVCardParser::State::generic()
{
    const Text value = parseSingleValue();
    const bool ignored = std::any_of(std::begin(kIgnored), std::end(kIgnored),
        [&](std::string_view name) { return equalInAnyCase(name, line.name); });
    if (ignored || !value || value->empty())
        return;
    if (!card.otherNotes.empty())
        card.otherNotes += '\n';
    card.otherNotes.append(line.name).append(": ").append(*value);
}
