// Where offered words come from: names in the roster, properties, labels, rules, preferences.
#include "Offers.h"

#include "CardJson.h"
#include "Lookup.h"
#include "Rules.h"
#include "Subject.h"

#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRLabels.h"
#include "core/ZRNameOrder.h"
#include "core/ZRPerson.h"
#include "core/ZRPropertyType.h"
#include "platform/text/Fold.h"
#include "search/ZRPeopleMatching.h"
#include "search/ZRSearchElement.h"
#include "store/ZRIdsOfPeople.h"
#include "store/ZRStoreFile.h"

#include <algorithm>
#include <map>

using platform::Ref;

namespace {

using Candidates = std::vector<Candidate>;

/// As many cards are offered; nobody looks through more.
constexpr std::size_t kMostCards = 200;
/// As lists print it, and as commands take it.
constexpr std::size_t kShownOfId = 8;

struct Preference {
    std::string_view key, meaning;
};
constexpr Preference preferences[] = {
    {"ZRNameSorting", "lists by first (0) or last name (1)"},
    {"ZRNameDisplay", "names with the first (0) or the last one in front (1)"},
    {"ZRDefaultAddressCountryCode", "the country that addresses do not name"},
    {"ZRPhoneFormat-Enabled", "false: numbers as they were typed"},
    {"ZRDontAutoMerge", "true: an import adds who is there already"},
    {"ZRIncludeNotesInVCard", "true: vCards hold notes"},
    {"ZRIncludePhotosInVCard", "true: vCards hold pictures"},
    {"ZRPrivateVCardFieldsEnabled", "true: vCards lack what is private on one's own card"},
    {"ZRUse21vCardFormat", "true: vCards are of version 2.1"},
    {"ZR21vCardEncoding", "the charset of vCards that name none"},
    {"ZRDisableSync", "true: saves start no sync tool"},
    {"ZRDebugLog", "true: log more"},
    {"ZRSearchDebug", "true: log each search"},
    {"ZRLockDebug", "true: log the global lock"},
    {"ZRFileLockDebug", "true: log the lock between processes"},
    {"ZRLogNotifications", "true: log notices"},
};

void addIfBegins(Candidates& found, const std::string& text, std::string word, std::string meaning)
{
    if (beginsWith(word, text))
        found.push_back({std::move(word), std::move(meaning)});
}

// ---- records

bool looksLikeId(const std::string& text)
{
    constexpr std::size_t shortest = 4;
    return text.size() >= shortest && text.find_first_not_of("0123456789ABCDEFabcdef-:") == std::string::npos;
}

Candidates cardsById(ZRRoster& roster, const std::string& text)
{
    std::vector<std::string> ids = ZRIdsOfPeople(roster, std::nullopt);
    std::erase_if(ids, [&](const auto& id) { return !beginsWith(id, text); });
    if (ids.size() > kMostCards)
        return {};
    Candidates found;
    for (const auto& person : roster.recordsForUniqueIds(ids))
        found.push_back(
            {person->uniqueId().substr(0, std::max(kShownOfId, text.size())), displayName(*person)});
    return found;
}

std::vector<ZRFoundPerson> everybody(ZRRoster& roster)
{
    const auto ids = ZRIdsOfPeople(roster, ZRNameOrder::preferred);
    if (ids.size() > kMostCards)
        return {};
    std::vector<ZRFoundPerson> people;
    for (const auto& person : roster.recordsForUniqueIds(ids))
        people.push_back({person->uniqueId(), displayName(*person), {}});
    return people;
}

std::vector<ZRFoundPerson> peopleNamedLike(ZRRoster& roster, const std::string& text)
{
    std::vector<std::string> terms;
    for (std::size_t from = 0; from < text.size();) {
        const auto to = std::min(text.find(' ', from), text.size());
        if (to > from)
            terms.push_back(platform::foldCaseAndDiacritics(text.substr(from, to - from)));
        from = to + 1;
    }
    if (terms.empty())
        return everybody(roster);
    auto people = ZRNamesOfPeopleMatching(
        roster, ZRPerson::searchElementForTerms(ZRPerson::recordClassDescription, terms));
    std::erase_if(people, [&](const auto& person) { return !beginsWith(person.name, text); });
    return people;
}

/// By name where one card has it, else by the start of the id.
Candidates cards(ZRRoster& roster, const std::string& text)
{
    const auto people = peopleNamedLike(roster, text);
    std::map<std::string, int> named;
    for (const auto& person : people)
        ++named[person.name];
    Candidates found;
    for (const auto& person : people)
        if (found.size() < kMostCards && !person.name.empty())
            found.push_back(named[person.name] == 1
                    ? Candidate{person.name, person.uniqueId.substr(0, kShownOfId)}
                    : Candidate{person.uniqueId.substr(0, kShownOfId), person.name});
    return found.empty() && looksLikeId(text) ? cardsById(roster, text) : found;
}

Candidates groups(ZRRoster& roster, GroupKind kind, const std::string& text)
{
    Candidates found;
    for (const auto& group : groupsByName(roster, kind))
        if (const std::string name = group->name(); !name.empty())
            addIfBegins(found, text, name, group->uniqueId().substr(0, kShownOfId));
    return found;
}

// ---- parts of cards

/// "Email;home", "Email;work", … for a text in which the semicolon is reached.
Candidates labels(ZRRoster& roster, const std::string& text, std::string_view behind)
{
    const std::string subject = text.substr(0, text.find(';'));
    Candidates found;
    const auto named = subjectOf(roster, subject, "");
    for (const auto& label : builtInLabelsForProperty(named.property))
        addIfBegins(found, text,
            subject + ";" + ZREnglishLocalizedPropertyOrLabel(label) + std::string(behind),
            ZRLocalizedPropertyOrLabel(label));
    return found;
}

/// The properties of people, each followed by what may stand behind it.
Candidates properties(ZRRoster& roster, const std::string& text, std::string_view behind)
{
    if (text.find(';') != std::string::npos)
        return labels(roster, text, behind);
    auto names = ZRRecord::propertiesWithRoster(ZRPerson::recordClassDescription, &roster);
    std::ranges::sort(names);
    Candidates found;
    for (const auto& name : names) {
        const std::string meaning = ZRLocalizedPropertyOrLabel(name);
        addIfBegins(found, text, name + std::string(behind), meaning);
        if (!builtInLabelsForProperty(name).empty())
            addIfBegins(found, text, name + ";", meaning + ", by label");
    }
    return found;
}

Candidates changes(ZRRoster& roster, const std::string& text)
{
    return text.find('=') == std::string::npos ? properties(roster, text, "=") : Candidates();
}

// ---- rules

/// "Birthday within ", … for a text in which the subject stands.
Candidates operators(const std::string& text, const std::string& subject)
{
    Candidates found;
    const bool isGroup = subject == "Group";
    for (const auto& [word, meaning] : ruleOperators())
        if ((word.find("member-of") != std::string_view::npos) == isGroup)
            addIfBegins(found, text, subject + " " + std::string(word) + " ", std::string(meaning));
    if (!isGroup)
        for (const char* word : {" is absent", " is present"})
            addIfBegins(found, text, subject + word, "");
    return found;
}

Candidates rules(ZRRoster& roster, const std::string& text)
{
    const auto blank = text.find(' ');
    if (blank == std::string::npos) {
        Candidates found = properties(roster, text, " ");
        addIfBegins(found, text, "Card ", "the whole card");
        addIfBegins(found, text, "Group ", "the groups that a card is in");
        return found;
    }
    const auto second = text.find(' ', blank + 1);
    if (second == std::string::npos)
        return operators(text, text.substr(0, blank));
    if (text.substr(0, blank) != "Group")
        return {};
    Candidates found;
    const std::string front = text.substr(0, second + 1);
    for (auto& [word, meaning] : groups(roster, GroupKind::any, text.substr(second + 1)))
        found.push_back({front + word, meaning});
    return found;
}

/// Opened without a word, and without what a command does beside it.
Ref<ZRRoster> rosterIfAny(const Options& options)
{
    applyPreferences(options);
    ZRRoster::setShouldCreateEmptyDatabase(true);
    return zrHasStoreFile(ZRRoster::rosterDirectory()) ? ZRRoster::sharedRoster() : nullptr;
}

Candidates ofRoster(Offer offer, ZRRoster& roster, const std::string& text, const Options& options)
{
    switch (offer) {
    case Offer::cards:
        return options.asGroups ? groups(roster, GroupKind::ordinary, text) : cards(roster, text);
    case Offer::groups:
        return groups(roster, GroupKind::any, text);
    case Offer::ordinaryGroups:
        return groups(roster, GroupKind::ordinary, text);
    case Offer::smartGroups:
        return groups(roster, GroupKind::smart, text);
    case Offer::changes:
        return changes(roster, text);
    case Offer::removals:
        return properties(roster, text, "");
    case Offer::rules:
        return rules(roster, text);
    default:
        return {};
    }
}

} // namespace

bool beginsWith(const std::string& text, const std::string& beginning)
{
    return platform::foldCaseAndDiacritics(text).starts_with(platform::foldCaseAndDiacritics(beginning));
}

std::vector<Candidate> offered(Offer offer, const std::string& text, const Options& options)
{
    Candidates found;
    switch (offer) {
    case Offer::nothing:
    case Offer::files:
    case Offer::folders:
        return found;
    case Offer::preferences:
        for (const auto& [key, meaning] : preferences)
            addIfBegins(found, text, std::string(key) + "=", std::string(meaning));
        return found;
    case Offer::reachProperties:
        for (const char* property : {"Email", "Phone", "Address"})
            addIfBegins(found, text, property, "");
        return found;
    default:
        const auto roster = rosterIfAny(options);
        return roster ? ofRoster(offer, *roster, text, options) : found;
    }
}
