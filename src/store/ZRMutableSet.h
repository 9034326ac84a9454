// How the objects behind a to-many key of a record are changed one by one.
#pragma once

#include "core/ZRRecord.h"
#include "objectstore/StoreObject.h"

#include <string>

/// The objects of a to-many key of one record, as they are at each call.
///
/// It is no copy: what is added or removed is changed in the record, and unsaved until its roster is saved.
///
/// Ownership: shares ownership of the record.
/// Threads:   every operation takes the global lock.
/// Errors:    a key that is no to-many relationship raises objectstore::InvalidKey. Of a record that is gone
/// the
///            set is empty, and stays so.
class ZRMutableSet {
public:
    ZRMutableSet(platform::Ref<ZRRecord> record, std::string_view key);

    objectstore::ObjectList allObjects() const;
    std::size_t count() const { return allObjects().size(); }
    void addObject(objectstore::StoreObject& object);
    void removeObject(objectstore::StoreObject& object);

private:
    const platform::Ref<ZRRecord> _record;
    const std::string _key;
};
