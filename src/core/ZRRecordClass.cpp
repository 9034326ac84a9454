// The table of record classes.
#include "core/ZRRecordClass.h"

#include "core/ZRAllGroup.h"
#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRInfo.h"
#include "core/ZRLastImportGroup.h"
#include "core/ZRPerson.h"
#include "core/ZRPrivateRecords.h"
#include "search/ZRSmartGroup.h"

#include <algorithm>

/// The one who may make unbound handles.
struct ZRRecordClasses {
    template <class Class>
    static platform::Ref<ZRRecord> make()
    {
        return platform::Ref<ZRRecord>::adopt(new Class);
    }
};

const ZRRecordClass ZRRecord::recordClassDescription{"ZRRecord", nullptr, nullptr};
const ZRRecordClass ZRPerson::recordClassDescription{
    zr::kZRPersonRecordType, &ZRRecord::recordClassDescription, ZRRecordClasses::make<ZRPerson>};
const ZRRecordClass ZRSubscribedPerson::recordClassDescription{zr::kZRSubscribedPersonRecordType,
    &ZRPerson::recordClassDescription, ZRRecordClasses::make<ZRSubscribedPerson>};
const ZRRecordClass ZRGroup::recordClassDescription{
    zr::kZRGroupRecordType, &ZRRecord::recordClassDescription, ZRRecordClasses::make<ZRGroup>};
const ZRRecordClass ZRSmartGroup::recordClassDescription{
    zr::kZRSmartGroupRecordType, &ZRGroup::recordClassDescription, ZRRecordClasses::make<ZRSmartGroup>};
const ZRRecordClass ZRSubscribedGroup::recordClassDescription{zr::kZRSubscribedGroupRecordType,
    &ZRGroup::recordClassDescription, ZRRecordClasses::make<ZRSubscribedGroup>};
const ZRRecordClass ZRSpecialGroup::recordClassDescription{
    "ZRSpecialGroup", &ZRGroup::recordClassDescription, ZRRecordClasses::make<ZRSpecialGroup>};
const ZRRecordClass ZRAllGroup::recordClassDescription{
    "ZRAllGroup", &ZRSpecialGroup::recordClassDescription, ZRRecordClasses::make<ZRAllGroup>};
const ZRRecordClass ZRLastImportGroup::recordClassDescription{
    "ZRLastImportGroup", &ZRSpecialGroup::recordClassDescription, ZRRecordClasses::make<ZRLastImportGroup>};
const ZRRecordClass ZRInfo::recordClassDescription{
    "ZRInfo", &ZRRecord::recordClassDescription, ZRRecordClasses::make<ZRInfo>};
const ZRRecordClass ZRSubscription::recordClassDescription{
    "ZRSubscription", &ZRRecord::recordClassDescription, ZRRecordClasses::make<ZRSubscription>};
const ZRRecordClass ZRLog::recordClassDescription{
    "ZRLog", &ZRRecord::recordClassDescription, ZRRecordClasses::make<ZRLog>};
const ZRRecordClass ZRMailRecent::recordClassDescription{
    zr::kZRMailRecentRecordType, &ZRRecord::recordClassDescription, ZRRecordClasses::make<ZRMailRecent>};
const ZRRecordClass ZRDataType::recordClassDescription{
    "ZRDataType", &ZRRecord::recordClassDescription, ZRRecordClasses::make<ZRDataType>};
const ZRRecordClass ZRGroupContents::recordClassDescription{
    "ZRGroupContents", &ZRRecord::recordClassDescription, ZRRecordClasses::make<ZRGroupContents>};

namespace {

const ZRRecordClass* const allClasses[] = {&ZRRecord::recordClassDescription,
    &ZRPerson::recordClassDescription, &ZRSubscribedPerson::recordClassDescription,
    &ZRGroup::recordClassDescription, &ZRSmartGroup::recordClassDescription,
    &ZRSubscribedGroup::recordClassDescription, &ZRSpecialGroup::recordClassDescription,
    &ZRAllGroup::recordClassDescription, &ZRLastImportGroup::recordClassDescription,
    &ZRInfo::recordClassDescription, &ZRSubscription::recordClassDescription, &ZRLog::recordClassDescription,
    &ZRMailRecent::recordClassDescription, &ZRDataType::recordClassDescription,
    &ZRGroupContents::recordClassDescription};

} // namespace

bool ZRRecordClass::isKindOf(const ZRRecordClass& other) const
{
    for (const ZRRecordClass* recordClass = this; recordClass; recordClass = recordClass->base)
        if (recordClass == &other)
            return true;
    return false;
}

const ZRRecordClass* ZRRecordClass::named(std::string_view recordType)
{
    const auto at = std::ranges::find(allClasses, recordType, &ZRRecordClass::name);
    return at == std::end(allClasses) ? nullptr : *at;
}
