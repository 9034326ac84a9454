// What a smart group finds, and how it notices that it finds something else than before.
#include "search/ZRSmartGroup.h"

#include "core/ZRConstants.h"
#include "core/ZRFailure.h"
#include "core/ZRPerson.h"
#include "search/ZRSearchElementConjunction.h"
#include "search/ZRSearchElementMatch.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <set>

using platform::Ref;
using platform::Value;

namespace {

// The bits of kZRSmartGroupFlagsProperty.
constexpr std::int64_t modifiedFlag = 1 << 0;
constexpr std::int64_t tracksFlag = 1 << 1;

/// The element that was read last, and the archive that it was read from: other processes, and whoever sets
/// the property itself, change the archive alone.
constexpr std::string_view elementKey = "ZRActualSearchElement";
constexpr std::string_view archiveKey = "ZRActualSearchElementData";

/// What a group's dictionary has beside its id and class.
constexpr std::array<std::string_view, 3> dictionaryProperties{
    zr::kZRGroupNameProperty, zr::kZRSearchElementProperty, zr::kZRSmartGroupFlagsProperty};

/// Whether the element keeps records alive. Kept by a stored group, such an element could keep the group
/// itself.
bool holdsRecords(const ZRSearchElement& element)
{
    if (const auto* match = dynamic_cast<const ZRSearchElementMatch*>(&element))
        return match->_value().as<ZRRecord>() != nullptr;
    const auto* conjunction = dynamic_cast<const ZRSearchElementConjunction*>(&element);
    return conjunction && std::ranges::any_of(conjunction->_children(), [](const auto& child) {
        return holdsRecords(*child);
    });
}

/// Keeps a group marked while this thread looks for its members. A search that is made in memory asks the
/// groups that it names for theirs, and may come back.
class Looking {
public:
    explicit Looking(const std::string& uniqueId) : _uniqueId(uniqueId) { }
    ~Looking()
    {
        if (_isFirst)
            groups().erase(_uniqueId);
    }
    Looking(const Looking&) = delete;
    Looking& operator=(const Looking&) = delete;

    bool isFirst() const { return _isFirst; }

private:
    static std::set<std::string>& groups()
    {
        thread_local std::set<std::string> underWay;
        return underWay;
    }

    const std::string _uniqueId;
    const bool _isFirst = groups().insert(_uniqueId).second;
};

} // namespace

ZRUnreadableSearchElement::ZRUnreadableSearchElement(std::string_view groupId, platform::Error error)
    : _error(std::move(error))
    , _text(fmt::format("the search of smart group {} cannot be read: {}", groupId, _error.text))
{
}

ZRUnreadableSearchElement::~ZRUnreadableSearchElement() = default;

Ref<ZRSmartGroup> ZRSmartGroup::init() { return initWithRoster(nullptr); }

Ref<ZRSmartGroup> ZRSmartGroup::initWithRoster(Ref<ZRRoster> roster)
{
    return platform::refCast<ZRSmartGroup>(
        ZRRecord::initWithUniqueId(recordClassDescription, std::nullopt, std::move(roster)));
}

ZRRecordList ZRSmartGroup::smartGroups()
{
    const auto roster = ZRRoster::sharedRoster();
    return roster ? locked(*roster, ZRAccess::read,
               [&]() ZR_NTS { return roster->nts_AllRecordsForClass(recordClassDescription); })
                  : ZRRecordList();
}

Ref<ZRSearchElement> ZRSmartGroup::searchElement() const
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return nts_SearchElement(); });
}

Ref<ZRSearchElement> ZRSmartGroup::nts_SearchElement() const
{
    const Value archive = nts_ValueForProperty(zr::kZRSearchElementProperty);
    if (!archive.isData())
        return nullptr;
    if (auto* known = nts_ValueInTemporaryCacheForProperty(elementKey).as<ZRSearchElement>();
        known && nts_ValueInTemporaryCacheForProperty(archiveKey) == archive)
        return Ref<ZRSearchElement>(known);
    auto element = ZRSearchElement::nts_unarchivedElement(archive.asBytes(), nts_Roster());
    if (!element)
        throw ZRUnreadableSearchElement(nts_UniqueId(), element.error());
    const bool canKeep = !holdsRecords(**element);
    nts_SetValueInTemporaryCache(canKeep ? Value(*element) : Value(), elementKey);
    nts_SetValueInTemporaryCache(canKeep ? archive : Value(), archiveKey);
    return *element;
}

void ZRSmartGroup::setSearchElement(const Ref<ZRSearchElement>& element)
{
    locked(*nts_Roster(), ZRAccess::write, [&]() ZR_NTS { nts_SetSearchElement(element); });
}

void ZRSmartGroup::nts_SetSearchElement(const Ref<ZRSearchElement>& element)
{
    zrRequire(bool(element), "element != nil && [element isKindOfClass:[ZRSearchElement class]]");
    const auto bytes = element->archivedData();
    if (!bytes)
        zrRefuse(fmt::format("element can be archived: {}", bytes.error().text));
    const Value archive = Value::data(*bytes);
    nts_SetValue(archive, zr::kZRSearchElementProperty);
    const bool canKeep = !holdsRecords(*element);
    nts_SetValueInTemporaryCache(canKeep ? Value(element) : Value(), elementKey);
    nts_SetValueInTemporaryCache(canKeep ? archive : Value(), archiveKey);
}

ZRRecordList ZRSmartGroup::nts_Members() const
{
    const Looking looking(nts_UniqueId());
    const auto element = looking.isFirst() ? nts_SearchElement() : nullptr;
    return element ? nts_Roster()->recordsMatchingSearchElement(element, false) : ZRRecordList();
}

ZRRecordList ZRSmartGroup::_members() const
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return nts_Members(); });
}

// What is derived from the members is stored with the group, hence the cast: asking is what notices.
ZRRecordList ZRSmartGroup::members() const
{
    ZRRecordList found = _members();
    auto joined =
        locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return nts_replaceCachedMembers(found); });
    if (joined) {
        auto& self = const_cast<ZRSmartGroup&>(*this);
        self.setIsModified(true);
        self.setValue(Value::array(std::move(*joined)), zr::kZRSmartGroupModifiedUIDsProperty);
    }
    return found;
}

/// Remembers who is in the group now, and answers the ids of those who came in since the last time; absent
/// when nothing has changed, and for a group that is gone: it must not come back by a write.
std::optional<std::vector<Value>> ZRSmartGroup::nts_replaceCachedMembers(const ZRRecordList& now) const
{
    const auto* impl = zrDatabaseImpl();
    if (!impl || !impl->context() || impl->isDeleted())
        return {};
    UniqueIds ids;
    for (const auto& record : now)
        ids.insert(record->nts_UniqueId());
    const auto before = std::exchange(_cachedMembers, ids);
    if (!before || *before == ids)
        return {};
    std::erase_if(ids, [&](const auto& id) { return before->contains(id); });
    std::vector<Value> joined(ids.begin(), ids.end());
    std::ranges::sort(joined, {}, [](const Value& id) { return id.asText(); });
    return joined;
}

ZRRecordList ZRSmartGroup::nts_Subgroups() const { return {}; }

bool ZRSmartGroup::_isSmartGroupParentOfRecord(const ZRRecord& record) const
{
    const auto all = members();
    return std::ranges::any_of(all, [&](const auto& member) { return member->isEqual(record); });
}

bool ZRSmartGroup::nts_hasFlag(std::int64_t flag) const
{
    return (nts_ValueForProperty(zr::kZRSmartGroupFlagsProperty).asInteger() & flag) != 0;
}

void ZRSmartGroup::nts_setFlag(std::int64_t flag, bool isSet)
{
    const std::int64_t flags = nts_ValueForProperty(zr::kZRSmartGroupFlagsProperty).asInteger();
    nts_SetValue(Value(isSet ? flags | flag : flags & ~flag), zr::kZRSmartGroupFlagsProperty);
}

bool ZRSmartGroup::nts_TracksModification() const { return nts_hasFlag(tracksFlag); }

bool ZRSmartGroup::tracksModification() const
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return nts_TracksModification(); });
}

void ZRSmartGroup::nts_SetTracksModification(bool tracks) { nts_setFlag(tracksFlag, tracks); }

void ZRSmartGroup::setTracksModification(bool tracks)
{
    locked(*nts_Roster(), ZRAccess::write, [&]() ZR_NTS { nts_SetTracksModification(tracks); });
}

bool ZRSmartGroup::nts_IsModified()
{
    if (nts_Roster()->nts_shouldUpdateDateRelatedSmartGroups())
        nts_Roster()->nts_UpdateDateRelatedSmartGroups();
    return nts_hasFlag(modifiedFlag);
}

bool ZRSmartGroup::isModified()
{
    return locked(*nts_Roster(), ZRAccess::write, [&]() ZR_NTS { return nts_IsModified(); });
}

void ZRSmartGroup::nts_SetIsModified(bool modified) { nts_setFlag(modifiedFlag, modified); }

void ZRSmartGroup::setIsModified(bool modified)
{
    locked(*nts_Roster(), ZRAccess::write, [&]() ZR_NTS { nts_SetIsModified(modified); });
}

bool ZRSmartGroup::nts_AddMember(ZRPerson&) { return false; }
bool ZRSmartGroup::nts_RemoveMember(ZRPerson&) { return false; }
bool ZRSmartGroup::nts_AddSubgroup(ZRGroup&) { return false; }
bool ZRSmartGroup::nts_RemoveSubgroup(ZRGroup&) { return false; }

bool ZRSmartGroup::setDistributionIdentifier(std::optional<std::string_view>, std::string_view, ZRPerson&)
{
    return false;
}

bool ZRSmartGroup::nts_SetDistributionIdentifier(
    std::optional<std::string_view>, std::string_view, ZRPerson&, bool)
{
    return false;
}

std::optional<std::string> ZRSmartGroup::distributionIdentifierForProperty(
    std::string_view, const ZRPerson&) const
{
    return {};
}

Value ZRSmartGroup::dictionaryRepresentation() const
{
    std::vector<std::pair<std::string, Value>> entries{{std::string(zr::kZRUIDProperty), Value(uniqueId())},
        {std::string(zr::kZRGroupClassKey), Value(recordClass().name)}};
    locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS {
        for (const auto property : dictionaryProperties)
            if (Value value = nts_ValueForProperty(property); !value.isNothing())
                entries.emplace_back(property, std::move(value));
    });
    return Value::dictionary(std::move(entries));
}

Ref<ZRRecord> ZRSmartGroup::nts_RecordFromDictionaryRepresentation(
    const Value& dictionary, const Value& recordMapping, ZRRoster& roster, bool generateIds)
{
    return nts_recordFromDictionaryRepresentation(
        recordClassDescription, dictionary, recordMapping, roster, generateIds);
}

bool ZRSmartGroup::nts_PopulateWithDictionary(const Value& dictionary, const Value& recordMapping,
    bool generateIds, bool includeCoreProperties, ZRRoster& roster)
{
    if (includeCoreProperties)
        return ZRGroup::nts_PopulateWithDictionary(dictionary, recordMapping, generateIds, true, roster);
    if (!dictionary.isDictionary())
        return false;
    for (const auto property : dictionaryProperties)
        if (const Value& value = dictionary[property]; !value.isNothing())
            nts_SetValue(value, property);
    return true;
}
