// What of a stored person goes into a vCard, read without making values of it.
#pragma once

#include "core/ZRGlobalLock.h"
#include "core/ZRPerson.h"
#include "objectstore/StoreObject.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class ZROSContact;

namespace vcard {

/// Where the entries of one property are stored.
struct EntryKeys {
    std::string_view property;
    const objectstore::Slot& rows;
    /// Null for an address, which is a whole row.
    const objectstore::Slot* value;
    /// Of messaging entries, which share their rows: the service.
    std::string_view service;
    const objectstore::Slot &uniqueId, &label, &isPrimary;

    /// Those of a multi-value of people that are in the vocabulary; null for another property.
    static const EntryKeys* of(std::string_view property);
};

/// The lines for entries of one property.
struct EntryLine {
    std::string_view name;
    const EntryKeys& keys;
};

/// The properties of a person that have lines for their entries, in the order of the lines.
struct EntryLines {
    EntryLines();
    static const EntryLines& shared();

    const EntryKeys &emails, &phones, &addresses;
    std::vector<EntryLine> links, messaging, others;
};

/// One entry of a multi-value. Its texts hold until something else is read.
struct Entry {
    const EntryKeys& keys;
    objectstore::StoreObject& row;
    bool isPrimary;

    std::string_view label() const { return row.text(keys.label); }
    /// The value as a text; that of a date is made in `scratch`.
    std::string_view value(std::string& scratch) const;
};

/// The stored side of one person. It says what `valueForProperty` would say.
///
/// Ownership: borrows the person.
/// Threads:   lives under one hold of the global lock.
/// Errors:    as StoreObject. A person that was deleted, here or elsewhere, has nothing but its id.
class StoredCard {
public:
    explicit StoredCard(const ZRPerson& person) ZR_NTS;

    std::string_view text(const objectstore::Slot& slot) const;
    bool isAbsent(const objectstore::Slot& slot) const;
    std::int64_t flags() const;
    /// The stored birthday, unless the card keeps it private.
    std::optional<double> birthday() const;
    /// The note, whole; absent without one.
    platform::Value note() const;
    /// When the record last changed; absent where nobody noted it.
    platform::Value lastChange() const;
    /// The names of the groups that the person is in.
    std::vector<std::string> groupNames() const;
    /// Calls `write` with each entry that the card shows, in their order.
    template <class Write>
    void forEachEntry(const EntryKeys& keys, Write&& write)
    {
        const objectstore::ObjectList rows = rowsOf(keys);
        const objectstore::StoreObject* const primary = primaryOf(keys, rows);
        for (const auto& row : rows)
            if (isEntry(keys, *row) && shows(keys, *row))
                write(Entry{keys, *row, row.get() == primary});
    }

private:
    objectstore::ObjectList rowsOf(const EntryKeys& keys);
    void readMessagingRows();
    static bool isEntry(const EntryKeys& keys, objectstore::StoreObject& row);
    static const objectstore::StoreObject* primaryOf(
        const EntryKeys& keys, const objectstore::ObjectList& rows);
    bool shows(const EntryKeys& keys, objectstore::StoreObject& row) const;

    ZROSContact* _contact;
    /// Whether this is Me, and vCards leave out what is private.
    bool _hidesFields;
    /// The rows of all messaging services, each with the property of its service; absent until one is asked.
    std::optional<std::vector<std::pair<objectstore::ObjectRef, std::string_view>>> _messaging;
};

} // namespace vcard
