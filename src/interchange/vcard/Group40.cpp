// A group as a vCard 4.0 of its own.
#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "interchange/vcard/Books40.h"
#include "interchange/vcard/Line40.h"
#include "interchange/vcard/VCard40.h"

void zrAppendVCard40(const ZRGroup& group, std::string& cards)
{
    using vcard::Line40;
    cards += vcard::kBegin40;
    Line40(cards, "KIND").text("group");
    Line40(cards, "FN").text(group.name());
    const auto writeMembers = [&](const ZRRecordList& members) {
        for (const auto& member : members)
            if (const std::string urn = vcard::urnOfRecord(member->uniqueId()); !urn.empty())
                Line40(cards, "MEMBER").uri(urn);
    };
    writeMembers(group.members());
    writeMembers(group.subgroups());
    vcard::appendBooks40(cards, group.uniqueId(), group.valueForProperty(zr::kZRModificationDateProperty));
    cards += vcard::kEnd40;
}
