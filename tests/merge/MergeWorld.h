// A roster of a host of its own, and what is merged into it.
#pragma once

#include "commands/ApplicationHost.h"
#include "core/ZRGroup.h"
#include "merge/CardsInOneLine.h"
#include "merge/ZRNewMerger.h"
#include "store/ZRManagedObjectContext.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

namespace test {

/// A host whose cards are those of one roster, which need not be the shared one.
class RosterHost : public ApplicationHost {
public:
    explicit RosterHost(Ref<ZRRoster> roster) : _roster(std::move(roster)) { }
    Ref<ZRManagedObjectContext> cardContext() override { return _roster->managedObjectContext(); }
    Ref<ZRRoster> aggregateRoster() override { return _roster; }

private:
    Ref<ZRRoster> _roster;
};

/// A new roster for each test, with custom properties of all types, and another one where cards come from.
class MergeTest : public testing::Test {
public:
    /// A line each, in their order.
    static std::vector<std::string> linesOf(const ZRRecordList& records);

protected:
    void SetUp() override;
    void TearDown() override;

    /// A saved card.
    Ref<ZRPerson> saved(std::string_view line);
    Ref<ZRPerson> imported(std::string_view line) { return card(incoming, line); }
    Ref<ZRGroup> group(std::string_view name, const std::vector<Ref<ZRPerson>>& members = {});
    /// The same record in another roster on the store.
    static Ref<ZRPerson> personIn(const Ref<ZRRoster>& roster, const ZRRecord& record);
    /// What the store says of that record, read by a roster that knows nothing yet.
    Ref<ZRPerson> reread(const ZRRecord& record)
    {
        return personIn(roster->parallelUniverseRoster(), record);
    }
    /// Everybody in the store, a line each, in the order of the lines.
    std::vector<std::string> people() const { return linesOf(roster->parallelUniverseRoster()->people()); }
    void removeEverybody();
    /// The names of the groups that a card is in, in order.
    static std::string groupsOf(const ZRRecord& record);

    Home home;
    Ref<ZRRoster> roster;
    Ref<ZRRoster> incoming;
    std::shared_ptr<ApplicationHost> formerHost;
};

} // namespace test
