// Multi-values in the store: how rows become a multi-value, and how a multi-value becomes rows.
#pragma once

#include "core/ZRPropertyType.h"
#include "objectstore/StoreObject.h"
#include "platform/value/Value.h"
#include "store/ZRPropertyPlaces.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

class ZRManagedObjectContext;
class ZROSRecord;

namespace objectstore {
class StoreContext;
} // namespace objectstore

/// Reads and rewrites the rows of one property of one record.
///
/// A multi-value read is a plain value: it keeps no link to the rows. A write replaces every row of the
/// property; an entry that keeps its identifier keeps its distribution-list choices, though its row is new.
///
/// Ownership: none; class-level operations only.
/// Threads:   the global lock and the context's lock are held.
/// Errors:    a row without value, label or identifier is passed over. A write answers false, with nothing
/// changed,
///            for a value that is no multi-value and for a property without rows.
class ZRMultiValueObjectStoreWrapper {
public:
    /// The multi-value of a property; absent when no entry could be read.
    static platform::Value initWithRecord(ZROSRecord& record, const ZRPropertyPlace& place);
    /// The same of a custom property, by its definition.
    static platform::Value initWithRecord(ZROSRecord& record, objectstore::StoreObject& definition);
    /// The value of one row of a custom property.
    static platform::Value valueOfCustomRow(objectstore::StoreObject& row, ZRPropertyType type);

    /// Makes the rows those of `value`; absent leaves none.
    static bool applyMultiValue(
        const platform::Value& value, const ZRPropertyPlace& place, ZROSRecord& record);
    /// The same of a custom property, of one value or of several.
    static bool applyCustomValue(
        const platform::Value& value, objectstore::StoreObject& definition, ZROSRecord& record);

    /// The rows of a multi-value property, in order.
    static objectstore::ObjectList rowsOf(ZROSRecord& record, const ZRPropertyPlace& place);
    /// The messaging rows of one service, in order.
    static objectstore::ObjectList messagingAddressesWithService(std::string_view service, ZROSRecord& owner);
    /// The one object for a messaging service in that store (null: the last one), shared by all processes.
    /// Null, and logged, when the store refuses it.
    static objectstore::ObjectRef serviceWithName(std::string_view name, ZRManagedObjectContext& context,
        objectstore::PersistentStore* persistentStore);
    /// The identifier of the first row that is marked primary.
    static std::optional<std::string> primaryIdentifierForEntities(const objectstore::ObjectList& rows);

    /// Distribution-list choices, by the identifier of the entry that they chose.
    using DistributionListConfigs = std::map<std::string, objectstore::ObjectList, std::less<>>;
    /// Deletes rows of a key of the record, but for rows without an identifier; their choices are saved.
    static void deletePropertyValues(const objectstore::ObjectList& rows, const objectstore::Slot& key,
        DistributionListConfigs& savedConfigs, ZROSRecord& record, objectstore::StoreContext& context);
    /// Moves the saved choices of that entry, if any, to its new row.
    static void rewireDistributionListConfig(DistributionListConfigs& savedConfigs,
        objectstore::StoreObject& propertyValue, std::string_view identifier);

    /// A new address row for a dictionary, in the store of `owner`; and the dictionary of a row.
    static objectstore::ObjectRef addressEntityWithValue(
        const platform::Value& dictionary, ZROSRecord& owner);
    static platform::Value addressValueWithEntity(objectstore::StoreObject& row);
};
