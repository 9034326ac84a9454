// Steps of the history that are commands: what tests/history walks, with every command and merge in place of
// plain edits.
#include "history/RandomEdits.h"
#include "merge/MergeKinds.h"
#include "store/ZRRoster.h"

namespace test {

void editAtRandom(const Ref<ZRRoster>& roster, std::uint32_t seed)
{
    ApplicationHost::install(std::make_shared<Forgetless>());
    {
        CommandDriver driver(roster, seed);
        if (roster->people().empty())
            populate(driver);
        const auto kinds = allKindsWithMerges();
        while (!kinds[driver.number(kinds.size())].second(driver))
            ;
    }
    roster->save();
    ApplicationHost::install(nullptr);
}

} // namespace test
