// How a group is written down.
#include "GroupJson.h"

#include "CardJson.h"

#include "core/ZRGroup.h"

#include <fmt/format.h>

namespace {

Json idsOf(const ZRRecordList& records)
{
    Json ids = Json::array();
    for (const auto& record : records)
        ids.push_back(record->uniqueId());
    return ids;
}

void appendRecords(std::string& text, std::string_view title, const ZRRecordList& records)
{
    for (const auto& record : records) {
        text += fmt::format("  {:<22} {}\n", title, nameAndId(*record));
        title = "";
    }
}

} // namespace

Json groupJson(ZRGroup& group)
{
    Json json = cardJson(group);
    json["members"] = idsOf(group.members());
    json["subgroups"] = idsOf(group.subgroups());
    return json;
}

std::string groupText(ZRGroup& group)
{
    std::string text = displayName(group) + "\n";
    appendRecords(text, "In", group.parentGroups());
    appendRecords(text, "Subgroups", group.subgroups());
    appendRecords(text, "Members", group.members());
    return text + fmt::format("  {:<22} {}\n", "Unique id", group.uniqueId());
}

void printChanged(const Options& options, std::string_view done, ZRGroup& group)
{
    if (options.json)
        printJson(groupJson(group));
    else
        print(fmt::format("{} {}\n", done, nameAndId(group)));
}
