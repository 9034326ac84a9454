// The one description of what the history keeps.
#include "history/HistoryModel.h"

#include "store/ZRModelTable.h"

namespace history {

namespace {

/// The bit of a card that came with the last import.
constexpr std::int64_t kLastImport = 0x80;

} // namespace

const objectstore::ImageModel& imageModel()
{
    static const auto* const model = [] {
        objectstore::ImageRules rules;
        rules.roots = {"ZROSContact", "ZROSAbstractGroup"};
        rules.uncounted = {"modificationDate", "modifiedUniqueIdsData"};
        rules.flagsKey = "displayFlags";
        rules.uncountedFlags = kLastImport;
        rules.names = {{"firstName", "lastName"}, {"organization"}, {"nickname"}, {"name"}};
        return new objectstore::ImageModel(*rosterModel(), std::move(rules));
    }();
    return *model;
}

} // namespace history
