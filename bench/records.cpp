// What records cost on a store that is there: the first names, all names, the sorted list and its edits, one
// edit and save, one new card, a group and its members.
#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRMutableMultiValue.h"
#include "core/ZRPerson.h"
#include "store/ZRDBCache.h"
#include "store/ZRRoster.h"
#include "support/Commands.h"
#include "support/Measure.h"
#include "support/OpenRoster.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace {

using bench::Result;
using platform::Ref;
using platform::Value;

/// Reads what a list shows of each.
std::size_t readNames(const ZRRecordList& people)
{
    std::size_t bytes = 0;
    for (const auto& person : people)
        bytes += static_cast<const ZRPerson&>(*person).compositeName().size();
    return bytes;
}

/// Counts the statements of every connection that opens from now on, and those that read rows of
/// relationships.
struct StatementCount {
    std::size_t all = 0, ofParts = 0;
};
StatementCount statements;

int countStatement(unsigned, void*, void* statement, void*)
{
    constexpr std::string_view parts[] = {"email_address", "phone_number", "postal_address", "url_address",
        "calendar_uri", "messaging_address", "related_name", "contact_date", "remote_location", "\"note\"",
        "contact_index", "custom_property_value", "group_contact"};
    const std::string_view sql = sqlite3_sql(static_cast<sqlite3_stmt*>(statement));
    ++statements.all;
    for (const std::string_view part : parts)
        if (sql.starts_with("SELECT") && sql.find(part) != sql.npos) {
            ++statements.ofParts;
            break;
        }
    return 0;
}

int countStatementsOf(sqlite3* connection, const char**, const struct sqlite3_api_routines*)
{
    return sqlite3_trace_v2(connection, SQLITE_TRACE_STMT, countStatement, nullptr);
}

/// Opens the roster and reads the first names. Once a process: the second time the store is open already.
int list(std::string_view job, const std::string& directory, std::size_t limit)
{
    const bench::Stopwatch watch;
    const auto roster = bench::openRoster(directory);
    const double opened = watch.wall();
    const ZRRecordList people = roster->sortedPeople(ZRNameOrder::preferred, limit);
    const double listed = watch.wall();
    if (readNames(people) == 0)
        bench::fail(directory + ": holds no cards");
    Result result(job, "roster", directory, people.size());
    result.add(watch.wall(), watch.processor());
    result.note("opened_s", opened);
    result.note("records_s", listed);
    result.note("statements", static_cast<double>(statements.all));
    result.note("relationship_reads", static_cast<double>(statements.ofParts));
    result.print();
    return 0;
}

int listFirst(const std::string& directory, std::size_t limit)
{
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(countStatementsOf));
    return list("open", directory, limit);
}

int listAll(const std::string& directory, std::size_t) { return list("list", directory, 0); }

/// The list of all people that a cache keeps, built and sorted in memory.
int sortedList(const std::string& directory, std::size_t)
{
    const auto roster = bench::openRoster(directory);
    const bench::Stopwatch watch;
    const auto list = ZRDBCache::sharedDBCache()->allPeople();
    if (list->records().empty())
        bench::fail(directory + ": holds no cards");
    Result result("sorted list", "roster", directory, list->records().size());
    result.add(watch.wall(), watch.processor());
    result.print();
    return 0;
}

/// One changed name after the other, told to the list. Nothing is saved.
int changedMember(const std::string& directory, std::size_t changes)
{
    const auto roster = bench::openRoster(directory);
    const auto cache = ZRDBCache::sharedDBCache();
    const ZRRecordList people = cache->allPeople()->records();
    if (people.empty())
        bench::fail(directory + ": holds no cards");
    Result result("changed member", "roster", directory, people.size());
    std::uint64_t state = 1;
    for (std::size_t i = 0; i < changes; ++i) {
        state = state * 6364136223846793005u + 1442695040888963407u;
        const auto& person = people[(state >> 33) % people.size()];
        const auto& other = people[(state >> 13) % people.size()];
        person->setValue(other->valueForProperty(zr::kZRLastNameProperty), zr::kZRLastNameProperty);
        result.time([&] { cache->changedMember(person); });
    }
    if (cache->allPeople()->records().size() != people.size())
        bench::fail("the list has lost people");
    result.print();
    return 0;
}

constexpr std::string_view kGroup = "Many members";

void save(ZRRoster& roster)
{
    if (!roster.save())
        bench::fail(roster.lastSaveError().text);
}

/// Puts the first people of the list into a group, for `members`.
int makeGroup(const std::string& directory, std::size_t members)
{
    const auto roster = bench::openRoster(directory);
    const auto group = ZRGroup::initWithRoster(roster);
    group->setValue(Value(kGroup), zr::kZRGroupNameProperty);
    Result result("group", "roster", directory, members);
    result.time([&] {
        group->addMembers(roster->sortedPeople(ZRNameOrder::preferred, members));
        save(*roster);
    });
    result.print();
    return 0;
}

/// The members of that group, as a process that has read nothing else gets them.
int members(const std::string& directory, std::size_t)
{
    const auto roster = bench::openRoster(directory);
    for (const auto& record : roster->groups())
        if (const auto group = platform::refCast<ZRGroup>(record); group->name() == kGroup) {
            const bench::Stopwatch watch;
            const ZRRecordList people = group->members();
            Result result("members", "roster", directory, people.size());
            result.add(watch.wall(), watch.processor());
            result.print();
            return 0;
        }
    bench::fail(directory + ": no group was made");
}

std::vector<std::string> allIds(ZRRoster& roster)
{
    std::vector<std::string> ids;
    for (const auto& person : roster.sortedPeople(ZRNameOrder::preferred, 0))
        ids.push_back(person->uniqueId());
    if (ids.empty())
        bench::fail("the roster holds no cards");
    return ids;
}

/// A job title and the address of the first e-mail, from the id to the disk.
void editCard(ZRRoster& roster, const std::string& id, const std::string& title, const std::string& address)
{
    const auto person = roster.recordForUniqueId(id);
    person->setValue(Value(title), zr::kZRJobTitleProperty);
    const Value emails = person->valueForProperty(zr::kZREmailProperty);
    const auto changed = emails.as<ZRMultiValue>()->mutableCopy();
    changed->replaceValueAtIndex(0, Value(address));
    person->setValue(Value(changed), zr::kZREmailProperty);
    save(roster);
}

int edit(const std::string& directory, std::size_t edits)
{
    const auto roster = bench::openRoster(directory);
    const auto ids = allIds(*roster);
    Result result("edit", "roster", directory, ids.size());
    std::uint64_t state = 1;
    for (std::size_t i = 0; i < edits; ++i) {
        state = state * 6364136223846793005u + 1442695040888963407u;
        const std::string& id = ids[(state >> 33) % ids.size()];
        const std::string title = fmt::format("Edited {}", i),
                          address = fmt::format("edit{}@bench.example.org", i);
        result.time([&] { editCard(*roster, id, title, address); });
    }
    const auto found = roster->peopleMatchingText(fmt::format("edit{}@bench", edits - 1));
    if (found.size() != 1)
        bench::fail("the last edit is not found by its text");
    result.print();
    return 0;
}

Value entry(std::string_view value, std::string_view label)
{
    const auto entries = platform::makeRef<ZRMutableMultiValue>();
    entries->addValue(Value(value), label);
    return Value(entries);
}

int add(const std::string& directory, std::size_t cards)
{
    const auto roster = bench::openRoster(directory);
    Result result("add", "roster", directory, allIds(*roster).size());
    for (std::size_t i = 0; i < cards; ++i)
        result.time([&] {
            const auto person = ZRPerson::initWithRoster(roster);
            person->setValue(Value("Nova"), zr::kZRFirstNameProperty);
            person->setValue(Value(fmt::format("Added{}", i)), zr::kZRLastNameProperty);
            person->setValue(Value("Added by hand; call back next week"), zr::kZRNoteProperty);
            person->setValue(entry(fmt::format("nova{}@bench.example.org", i), zr::kZREmailWorkLabel),
                zr::kZREmailProperty);
            person->setValue(entry("+44 1632 960123", zr::kZRPhoneWorkLabel), zr::kZRPhoneProperty);
            save(*roster);
        });
    result.print();
    return 0;
}

constexpr bench::Command kCommands[] = {{"open", listFirst}, {"list", listAll}, {"sorted", sortedList},
    {"changed", changedMember}, {"edit", edit}, {"add", add}, {"group", makeGroup}, {"members", members}};

} // namespace

int main(int count, char** arguments)
{
    return bench::runCommand(kCommands, {arguments, static_cast<std::size_t>(count)},
        "open ROSTER LIMIT | list ROSTER 1 | sorted ROSTER 1 | changed ROSTER CHANGES | edit ROSTER EDITS | "
        "add ROSTER CARDS | group ROSTER MEMBERS | members ROSTER 1\n"
        "edit, add and group change the roster: give them a copy.");
}
