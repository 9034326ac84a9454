// How a handle comes to be, is bound to its stored object and its roster, and ends.
#include "core/ZRRecord.h"

#include "core/ZRConstants.h"
#include "core/ZRFailure.h"
#include "core/ZRUniqueId.h"
#include "store/ZROSRecord.h"
#include "store/ZRRecordObjectStoreFactoryImpl.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <algorithm>

using platform::Ref;
using platform::Value;

Value ZRPrivateDictionary::value(std::string_view name) const
{
    if (_entries)
        for (const auto& [known, value] : *_entries)
            if (known == name)
                return value;
    return {};
}

void ZRPrivateDictionary::set(const Value& value, std::string_view name)
{
    if (!_entries)
        _entries = std::make_unique<Entries>();
    std::erase_if(*_entries, [&](const auto& entry) { return entry.first == name; });
    if (!value.isAbsent())
        _entries->emplace_back(name, value);
}

Ref<ZRRecord> ZRRecord::initWithUniqueId(
    const ZRRecordClass& recordClass, std::optional<std::string_view> uniqueId, Ref<ZRRoster> roster)
{
    if (!roster)
        roster = ZRRoster::roster();
    if (!roster)
        return nullptr;
    return locked(*roster, ZRAccess::write,
        [&]() ZR_NTS { return nts_initWithUniqueId(recordClass, uniqueId, *roster); });
}

Ref<ZRRecord> ZRRecord::nts_initWithUniqueId(
    const ZRRecordClass& recordClass, std::optional<std::string_view> uniqueId, ZRRoster& roster)
{
    auto impl =
        ZRRecordObjectStoreFactoryImpl::createNewDatabaseImplForInstance(recordClass, uniqueId, roster);
    return impl ? nts_initWithDatabaseImpl(recordClass, std::move(impl), roster) : nullptr;
}

Ref<ZRRecord> ZRRecord::nts_initWithDatabaseImpl(
    const ZRRecordClass& recordClass, Ref<ZROSRecord> impl, ZRRoster& roster)
{
    if (!impl || !recordClass.make)
        return nullptr;
    Ref<ZRRecord> record = recordClass.make();
    record->bind(std::move(impl), Ref<ZRRoster>(&roster));
    return record;
}

Ref<ZRRecord> ZRRecord::initSpecialRecordWithUniqueId(
    const ZRRecordClass& recordClass, std::string_view uniqueId, Ref<ZRRoster> roster)
{
    zrRequire(bool(roster), "roster != nil");
    return locked(*roster, ZRAccess::write, [&]() ZR_NTS {
        Ref<ZRRecord> record = recordClass.make();
        record->_uniqueId = uniqueId;
        record->_roster = roster;
        roster->nts_SetCachedRecord(record.get(), uniqueId);
        return record;
    });
}

void ZRRecord::bind(Ref<ZROSRecord> impl, Ref<ZRRoster> roster)
{
    _uniqueId = impl->nts_UniqueId();
    _databaseImpl = std::move(impl);
    _databaseImpl->setPublicRecord(this);
    _roster = std::move(roster);
    _roster->nts_SetCachedRecord(this, _uniqueId);
}

ZRRecord::ZRRecord() = default;
ZRRecord::~ZRRecord() = default;

// The last owner may go on any thread, under any lock. The end of a handle touches the roster's cache and the
// stored object, so it waits for the next holder of the global lock.
void ZRRecord::lastOwnerGone() noexcept { ReleasedHandles::shared().push(*this); }

void ZRRecord::finishRelease() noexcept
{
    if (_databaseImpl)
        _databaseImpl->zrPublicRecordIsGone(*this);
    if (_roster)
        _roster->nts_RecordIsGone(*this);
    delete this;
}

std::string ZRRecord::uniqueId() const { return _uniqueId; }
Ref<ZRRoster> ZRRecord::roster() const { return _roster; }
ZRRoster* ZRRecord::nts_Roster() const { return _roster.get(); }

std::string_view ZRRecord::_table() const
{
    return _databaseImpl ? _databaseImpl->_table() : recordClass().name;
}

bool ZRRecord::isEqual(const platform::Object& other) const
{
    const auto* record = dynamic_cast<const ZRRecord*>(&other);
    return record && (record == this || record->_uniqueId == _uniqueId);
}

std::size_t ZRRecord::hash() const { return std::hash<std::string>{}(_uniqueId); }

void ZRRecord::setRoster(Ref<ZRRoster> roster)
{
    zrRequire(bool(roster), "roster != nil");
    if (roster == _roster)
        return;
    if (_roster)
        _roster->nts_RecordIsGone(*this);
    _roster = std::move(roster);
    _roster->nts_SetCachedRecord(this, _uniqueId);
}

void ZRRecord::setDatabaseImpl(Ref<ZROSRecord> impl, Ref<ZRRoster> roster)
{
    if (_databaseImpl)
        _databaseImpl->zrPublicRecordIsGone(*this);
    _databaseImpl = std::move(impl);
    if (_databaseImpl)
        _databaseImpl->setPublicRecord(this);
    setRoster(std::move(roster));
}

bool ZRRecord::nts_MoveIntoRoster(ZRRoster& roster)
{
    return ZRRecordObjectStoreFactoryImpl::moveRecord(*this, roster);
}

bool ZRRecord::nts_RemoveFromRoster(ZRRoster& roster)
{
    if (!_databaseImpl || !ZRRecordObjectStoreFactoryImpl::removeRecord(*this, roster))
        return false;
    _databaseImpl->zrPublicRecordIsGone(*this);
    _databaseImpl = nullptr;
    return true;
}

std::string ZRRecord::description() const
{
    const Value dictionary =
        locked(*_roster, ZRAccess::read, [&]() ZR_NTS { return nts_DescriptionDictionary(); });
    return fmt::format("<{} {}> {}", recordClass().name, _uniqueId, dictionary.description());
}

std::string ZRRecord::stringForXcode() const { return description(); }

Value ZRRecord::nts_DescriptionDictionary() const
{
    std::vector<std::pair<std::string, Value>> entries;
    for (const auto& property : propertiesWithRoster(recordClass(), _roster.get()))
        entries.emplace_back(property, nts_ValueForProperty(property));
    return Value::dictionary(std::move(entries));
}
