// The one description of what the history keeps.
#include "history/HistoryModel.h"

#include "core/PersonFlags.h"
#include "store/ZRModelTable.h"

namespace history {

const objectstore::ImageModel& imageModel()
{
    static const auto* const model = [] {
        objectstore::ImageRules rules;
        rules.roots = {"ZROSContact", "ZROSAbstractGroup"};
        rules.uncounted = {"modificationDate", "modifiedUniqueIdsData"};
        rules.flagsKey = "displayFlags";
        rules.uncountedFlags = personFlags::kLastImport;
        rules.names = {{"firstName", "lastName"}, {"organization"}, {"nickname"}, {"name"}};
        return new objectstore::ImageModel(*rosterModel(), std::move(rules));
    }();
    return *model;
}

} // namespace history
