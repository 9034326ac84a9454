// What it costs to find cards that are there already, and to write those that a merger has gathered.
#include "core/ZRConstants.h"
#include "core/ZRMutableMultiValue.h"
#include "core/ZRPerson.h"
#include "merge/ZRNewMerger.h"
#include "store/ZRRoster.h"
#include "support/Commands.h"
#include "support/Measure.h"
#include "support/OpenRoster.h"

#include <fmt/format.h>

#include <string>
#include <string_view>

namespace {

using bench::Result;
using platform::Ref;
using platform::Value;

Value entries(std::string_view first, std::string_view second)
{
    const auto made = platform::makeRef<ZRMutableMultiValue>();
    made->addValue(Value(first), zr::kZRHomeLabel);
    made->addValue(Value(second), zr::kZRWorkLabel);
    return Value(made);
}

/// The n-th of people with names of their own, and a fact that tells two of one name apart.
Ref<ZRPerson> person(const Ref<ZRRoster>& roster, std::size_t n, std::string_view fact)
{
    auto made = ZRPerson::initWithRoster(roster);
    made->setValue(Value(fmt::format("First{}", n % 1000)), zr::kZRFirstNameProperty);
    made->setValue(Value(fmt::format("Last{}", n)), zr::kZRLastNameProperty);
    made->setValue(Value(fmt::format("Company {} {}", n % 77, fact)), zr::kZROrganizationProperty);
    made->setValue(Value(fmt::format("Said by {} in {}", n, fact)), zr::kZRNoteProperty);
    made->setValue(entries(fmt::format("p{}@{}.example.org", n, fact), fmt::format("w{}@example.org", n)),
        zr::kZREmailProperty);
    made->setValue(
        entries(fmt::format("+44 1632 {:06}", n), fmt::format("+44 1633 {:06}", n)), zr::kZRPhoneProperty);
    return made;
}

void save(ZRRoster& roster)
{
    if (!roster.save())
        bench::fail(roster.lastSaveError().text);
}

/// Makes a roster to work on.
int fill(const std::string& directory, std::size_t cards)
{
    constexpr std::size_t cardsInTransaction = 2000;
    const auto roster = bench::openRoster(directory);
    for (std::size_t n = 0; n < cards; ++n) {
        person(roster, n, "there");
        if ((n + 1) % cardsInTransaction == 0)
            save(*roster);
    }
    save(*roster);
    return 0;
}

/// People of those names, read from elsewhere.
ZRRecordList incomingPeople(std::size_t count)
{
    const auto incoming = ZRRoster::emptyMemoryBackedRoster();
    ZRRecordList people;
    for (std::size_t n = 0; n < count; ++n)
        people.push_back(person(incoming, n, "here"));
    return people;
}

int duplicates(const std::string& directory, std::size_t cards)
{
    const auto roster = bench::openRoster(directory);
    const ZRRecordList people = incomingPeople(cards);
    const auto merger = ZRNewMerger::initWithGroup(nullptr);
    Result result("duplicates of an import", "roster", directory, cards);
    std::size_t found = 0;
    result.time([&] { found = merger->duplicatesForPeople(people).size(); });
    result.note("found", static_cast<double>(found));
    result.print();
    return 0;
}

int update(const std::string& directory, std::size_t cards)
{
    const auto roster = bench::openRoster(directory);
    const ZRRecordList people = incomingPeople(cards);
    const auto merger = ZRNewMerger::initWithGroup(nullptr);
    const auto found = merger->duplicatesForPeople(people);
    Result result("update by a merger", "roster", directory, cards);
    const bench::Stopwatch watch;
    for (const auto& record : people)
        if (const auto at = found.find(record->uniqueId()); at != found.end())
            merger->updateCard(at->second, platform::refCast<ZRPerson>(record));
    result.note("update_s", watch.wall());
    merger->applyChanges();
    result.add(watch.wall(), watch.processor());
    if (!merger->failure().domain.empty() || merger->updatedPeople().empty())
        bench::fail("nothing was updated");
    result.print();
    return 0;
}

int add(const std::string& directory, std::size_t cards)
{
    const auto roster = bench::openRoster(directory);
    const ZRRecordList people = incomingPeople(cards);
    const auto merger = ZRNewMerger::initWithGroup(nullptr);
    for (const auto& record : people)
        merger->addPerson(platform::refCast<ZRPerson>(record));
    Result result("add by a merger", "roster", directory, cards);
    result.time([&] { merger->applyChanges(); });
    if (!merger->failure().domain.empty())
        bench::fail(merger->failure().text);
    result.print();
    return 0;
}

constexpr bench::Command kCommands[] = {
    {"fill", fill}, {"duplicates", duplicates}, {"update", update}, {"add", add}};

} // namespace

int main(int count, char** arguments)
{
    return bench::runCommand(kCommands, {arguments, static_cast<std::size_t>(count)},
        "fill ROSTER CARDS | duplicates ROSTER CARDS | update ROSTER CARDS | add ROSTER CARDS\n"
        "All but duplicates change the roster: give them a copy.");
}
