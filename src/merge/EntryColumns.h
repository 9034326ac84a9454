// The entries of multi-values as the search for duplicates sees them: numbers that are equal where they are.
#pragma once

#include "objectstore/ColumnFetch.h"
#include "objectstore/Model.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace merge {

/// One entry, while it is visited.
struct EntryColumns {
    /// The key of the card that has it.
    std::int64_t owner = 0;
    /// The property; empty for messaging addresses and custom values, of which one key holds several.
    std::string_view property = {};
    /// What the entry says, where that is one text.
    std::string_view text = {};
    /// Equal for the same value of the same property.
    std::uint64_t exact = 0;
    /// Equal also for one that reads the same.
    std::uint64_t similar = 0;
};

/// A kind of entry: the rows of one entity, and how they are read.
///
/// Ownership: a plain value over the model, which lives as long as the process.
/// Threads:   never changes.
/// Errors:    none.
class EntryKind {
public:
    /// How a row says its value.
    enum class Form { text, day, address, custom };

    EntryKind(
        const objectstore::Entity& entity, Form form, std::string_view property, std::string_view valueKey);

    const objectstore::Entity& entity() const { return *_entity; }
    std::string_view property() const { return _property; }
    /// The columns that `read` expects.
    const std::vector<std::string_view>& keys() const { return _keys; }
    /// Fills in what a row says; false for one that stands for no entry.
    bool read(std::span<const objectstore::FieldValue> fields, EntryColumns& entry) const;

private:
    const objectstore::Entity* _entity;
    Form _form;
    std::string_view _property;
    bool _hasDiscriminator = false;
    std::vector<std::string_view> _keys;
};

/// The kinds of entries that cards have.
const std::vector<EntryKind>& entryKindsOfPeople();

} // namespace merge
