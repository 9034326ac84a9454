// What a program does with people and groups beyond their properties: pictures and membership.
#include "api/ZRPeopleFunctions.h"

#include "api/Border.h"
#include "core/ZRGroup.h"
#include "core/ZRPerson.h"
#include "store/ZRRoster.h"

using border::as;
using border::guarded;
using border::owned;

// ---- people

ZRPersonRef ZRPersonCreate()
{
    return guarded([] { return owned(ZRPerson::init()); });
}

ZRArrayRef ZRPersonCopyParentGroups(ZRPersonRef person)
{
    return guarded([&] { return owned(as<ZRPerson>(person).parentGroups()); });
}

ZRDataRef ZRPersonCopyImageData(ZRPersonRef person)
{
    return guarded([&] { return owned(as<ZRPerson>(person).imageData()); });
}

bool ZRPersonSetImageData(ZRPersonRef person, ZRDataRef image)
{
    return guarded([&] {
        if (image)
            as<const platform::Data>(image);
        auto& card = as<ZRPerson>(person);
        if (!card.zrDatabaseImpl())
            return false;
        border::keepPicturesOf(*card.roster());
        return card.setImageData(border::value(image));
    });
}

// ---- groups

ZRGroupRef ZRGroupCreate()
{
    return guarded([] { return owned(ZRGroup::init()); });
}

ZRArrayRef ZRGroupCopyParentGroups(ZRGroupRef group)
{
    return guarded([&] { return owned(as<ZRGroup>(group).parentGroups()); });
}

bool ZRGroupAddMember(ZRGroupRef group, ZRPersonRef person)
{
    return guarded([&] { return as<ZRGroup>(group).addMember(as<ZRPerson>(person)); });
}

bool ZRGroupRemoveMember(ZRGroupRef group, ZRPersonRef person)
{
    return guarded([&] { return as<ZRGroup>(group).removeMember(as<ZRPerson>(person)); });
}

bool ZRGroupAddGroup(ZRGroupRef group, ZRGroupRef subgroup)
{
    return guarded([&] { return as<ZRGroup>(group).addSubgroup(as<ZRGroup>(subgroup)); });
}

bool ZRGroupRemoveGroup(ZRGroupRef group, ZRGroupRef subgroup)
{
    return guarded([&] { return as<ZRGroup>(group).removeSubgroup(as<ZRGroup>(subgroup)); });
}

ZRArrayRef ZRGroupCopyArrayOfAllMembers(ZRGroupRef group)
{
    return guarded([&] { return owned(as<ZRGroup>(group).members()); });
}

ZRArrayRef ZRGroupCopyArrayOfAllSubgroups(ZRGroupRef group)
{
    return guarded([&] { return owned(as<ZRGroup>(group).subgroups()); });
}

ZRStringRef ZRGroupCopyDistributionIdentifier(ZRGroupRef group, const char* property, ZRPersonRef person)
{
    return guarded([&] {
        return border::ownedText(as<ZRGroup>(group).distributionIdentifierForProperty(
            border::text(property), as<ZRPerson>(person)));
    });
}

bool ZRGroupSetDistributionIdentifier(
    ZRGroupRef group, const char* identifier, const char* property, ZRPersonRef person)
{
    return guarded([&] {
        return as<ZRGroup>(group).setDistributionIdentifier(
            border::text(identifier), border::text(property), as<ZRPerson>(person));
    });
}
