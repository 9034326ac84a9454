// Several labelled entries of one kind, such as a card's phone numbers: the read-only form.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRPropertyType.h"
#include "platform/value/Object.h"
#include "platform/value/Value.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

class ZRMutableMultiValue;

/// A list of entries, each an identifier, a label and a value; one of them is the primary entry.
///
/// It is not a view of a record: it is filled once, and a caller edits a mutable copy and sets that as the
/// property's value. An identifier is given once and survives every edit of its entry, every copy and the
/// store.
///
/// Ownership: owns its entries; values are shared.
/// Threads:   not locked. An immutable one may be read by several threads once its primary was asked for:
///            the first `primaryIdentifier` of one that was built without a primary stores it.
/// Errors:    a bad index or an empty identifier raises ZRInvalidArgument.
class ZR_EXPORT ZRMultiValue : public platform::Object {
public:
    /// Identifiers, labels and values of the entries, in step.
    struct Entries {
        std::vector<std::string> identifiers;
        std::vector<std::string> labels;
        std::vector<platform::Value> values;
        /// Absent: the first entry becomes the primary one when somebody asks.
        std::optional<std::string> primaryIdentifier;
    };

    /// Without entries.
    ZRMultiValue() = default;
    explicit ZRMultiValue(Entries entries) : _entries(std::move(entries)) { }
    /// The four arrays as they stand: damaged data may leave labels and values out of step with the
    /// identifiers. A reader of a missing one answers empty or absent.
    static platform::Ref<ZRMultiValue> _initWithIdentifiers(std::vector<std::string> identifiers,
        std::vector<platform::Value> values, std::vector<std::string> labels,
        std::optional<std::string> primaryIdentifier);
    /// From the form that `_dictionary` gives. The type is found in the values.
    static platform::Ref<ZRMultiValue> _initWithDictionary(
        const platform::Value& dictionary, ZRPropertyType valueType = kZRPropertyTypeUnknown);
    /// A fresh identifier: the upper-case text of a random UUID.
    static std::string _generateIdentifier();

    // ---- reading

    ZRIndex count() const { return static_cast<ZRIndex>(_entries.identifiers.size()); }
    const std::string& identifierAtIndex(ZRIndex index) const;
    const std::string& labelAtIndex(ZRIndex index) const;
    const platform::Value& valueAtIndex(ZRIndex index) const;
    /// kZRNotFound for an unknown identifier; an empty one raises.
    ZRIndex indexForIdentifier(std::string_view identifier) const;
    /// Absent for an unknown identifier.
    std::optional<std::string> labelForIdentifier(std::string_view identifier) const;
    platform::Value valueForIdentifier(std::string_view identifier) const;
    /// Former names of the two above: they log a warning.
    std::optional<std::string> _labelForIdentifier(std::string_view identifier) const;
    platform::Value _valueForIdentifier(std::string_view identifier) const;
    /// Absent only when there is no entry.
    const std::optional<std::string>& primaryIdentifier() const;
    /// The entry of `primaryIdentifier`, or kZRNotFound.
    ZRIndex primaryIndex() const;
    /// 256 plus the type that all values share; 0 without entries or when they differ.
    ZRPropertyType propertyType() const;

    /// Same entries in the same order, identifiers included. Which one is primary does not count.
    bool isEqual(const platform::Object& other) const override;
    enum class CompareIdentifiers { no, yes };
    bool isEqual(const platform::Object& other, CompareIdentifiers compareIdentifiers) const;
    std::size_t hash() const override;
    /// A line for each entry, with a star before the primary one.
    std::string description() const override;

    // ---- searching

    /// Whether an entry has this very value under this label.
    bool containsValue(const platform::Value& value, std::string_view label) const;
    /// The first entry with `value`, whatever its case; strings inside containers are compared likewise.
    ZRIndex _containsValue(const platform::Value& value) const;
    /// The first entry that reads the same: telephone numbers by their digits, other strings without
    /// punctuation, all whatever their case. What is no string is looked for with `_containsValue`.
    ZRIndex _containsSimilarValue(const platform::Value& value, std::string_view property) const;

    // ---- forms

    /// The values, which must be strings, with "\r" between them.
    std::string _makeMutableStringWithValues() const;
    /// "identifiers", "labels", "values" and "primaryIdentifier". Null markers inside values that are
    /// dictionaries fall away.
    platform::Value _dictionary() const;
    const std::vector<std::string>& _allIdentifiers() const { return _entries.identifiers; }
    const std::vector<std::string>& _allLabels() const { return _entries.labels; }
    const std::vector<platform::Value>& _allValues() const { return _entries.values; }

    // ---- copies: identifiers and the primary stay, and an absent primary stays absent

    /// Of an immutable one: itself with one more owner. Of a mutable one: a new mutable one.
    virtual platform::Ref<ZRMultiValue> copy() const;
    platform::Ref<ZRMutableMultiValue> mutableCopy() const;

protected:
    ~ZRMultiValue() override = default;

    bool hasIndex(ZRIndex index) const { return index >= 0 && index < count(); }

    mutable Entries _entries;
};
