// What is written when records become a file: its name, the people in it, and the format.
#include "core/ZRConstants.h"
#include "core/ZRFrameworkBundle.h"
#include "core/ZRGroup.h"
#include "core/ZRLog.h"
#include "core/ZRPerson.h"
#include "interchange/import/ZRvCardController.h"
#include "interchange/vcard/VCardText.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/run/Clock.h"
#include "store/ZROSRecord.h"
#include "store/ZRRecordObjectStoreFactoryImpl.h"
#include "store/ZRRoster.h"

#include <algorithm>
#include <unordered_set>

using platform::Ref;
using platform::Value;

namespace {

std::string localized(std::string_view key) { return ZRFrameworkBundle().localizedString(key, "ZRStrings"); }

/// Walks groups in groups; each group and each person once, so that groups in a circle end.
class Flattening {
public:
    explicit Flattening(ZRRecordList& people) : _people(people)
    {
        for (const auto& person : people)
            _known.insert(person->uniqueId());
    }

    void add(const Ref<ZRRecord>& record)
    {
        if (!record || !_known.insert(record->uniqueId()).second)
            return;
        const auto group = platform::refCast<ZRGroup>(record);
        if (!group) {
            _people.push_back(record);
            return;
        }
        for (const auto& member : group->members())
            add(member);
        for (const auto& subgroup : group->subgroups())
            add(subgroup);
    }

private:
    ZRRecordList& _people;
    std::unordered_set<std::string> _known;
};

/// The cards of all records; `write` is asked for people and for groups.
template <class Write>
std::string joined(const ZRRecordList& records, std::string_view format, Write&& write)
{
    const double start = platform::Clock::current().monotonic();
    std::string cards;
    for (const auto& record : records)
        if (const auto person = platform::refCast<ZRPerson>(record))
            cards += write(*person);
        else if (const auto group = platform::refCast<ZRGroup>(record))
            cards += write(*group);
    if (ZRPerfFlagIsSet(ZRPerfFlag::createVCard))
        ZRPerfLog("[LogCreateVCardTimes] Time to create vCard {} data = {:3.3f}", format,
            platform::Clock::current().monotonic() - start);
    return cards;
}

} // namespace

std::string ZRvCardController::exportRecords(const ZRRecordList& records)
{
    std::string name;
    if (records.size() == 1) {
        if (const auto group = platform::refCast<ZRGroup>(records.front()))
            name = group->name();
        else if (const auto person = platform::refCast<ZRPerson>(records.front()))
            name = person->_realCompositeName();
    }
    if (name.empty())
        name = localized(records.size() > 1 ? "vCards" : "vCard");
    return name + ".vcf";
}

void ZRvCardController::addRecord(const Ref<ZRRecord>& record, ZRRecordList& people)
{
    Flattening(people).add(record);
}

std::string ZRvCardController::vCardRepresentationOfRecord(const Ref<ZRRecord>& record)
{
    return vCardRepresentationOfRecords({record});
}

std::string ZRvCardController::vCardRepresentationOfRecords(const ZRRecordList& records)
{
    if (records.empty())
        return {};
    records.front()->roster()->prefetchDataForRecords(records);
    return ZRUserDefaults::rosterPreferences()->boolForKey(zr::kZRUse21vCardFormat)
        ? _vCard21RepresentationOfRecords(records)
        : _vCard30RepresentationOfRecords(records);
}

std::string ZRvCardController::_vCard21RepresentationOfRecords(const ZRRecordList& records)
{
    return joined(records, "2.1", [](const auto& record) { return record._21vCardRepresentationAsData(); });
}

std::string ZRvCardController::_vCard30RepresentationOfRecords(const ZRRecordList& records)
{
    const std::string cards = joined(records, "3.0",
        [](const auto& record) { return record._vCardRepresentationAsStringUsingImageCache(Value()); });
    return zrVCardDataRepresenation(cards).value_or(std::string());
}
