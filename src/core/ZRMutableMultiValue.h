// A multi-value that can be edited.
#pragma once

#include "core/ZRMultiValue.h"

/// A multi-value on its own, attached to no record: edit it, then set it as a property's value.
///
/// Ownership: as ZRMultiValue.
/// Threads:   one at a time.
/// Errors:    a bad argument raises ZRInvalidArgument before anything has changed.
class ZR_EXPORT ZRMutableMultiValue : public ZRMultiValue {
public:
    ZRMutableMultiValue() = default;
    /// Labels and values that are missing become empty; those without an identifier fall away.
    explicit ZRMutableMultiValue(Entries entries);

    /// Makes room: a reader of cards knows how many entries come.
    void reserve(std::size_t entries);

    /// Adds an entry at the end and answers its new identifier. The first entry becomes the primary one.
    /// `value` must be present and `label` not empty.
    std::string addValue(const platform::Value& value, std::string_view label);
    /// The same at `index`, which may be `count`. The primary entry stays what it is.
    std::string insertValue(const platform::Value& value, std::string_view label, ZRIndex index);
    /// The entry keeps its identifier. Answers true.
    bool replaceLabelAtIndex(ZRIndex index, std::string_view label);
    bool replaceValueAtIndex(ZRIndex index, const platform::Value& value);
    /// After the primary entry the first one is primary. Answers true.
    bool removeValueAndLabelAtIndex(ZRIndex index);
    /// Answers false when no entry has `identifier`.
    bool setPrimaryIdentifier(std::string_view identifier);

    /// Removes every entry with an equal value.
    void _removeValue(const platform::Value& value);
    /// Adds an entry with an identifier of its own. The primary entry stays what it is, even absent.
    void _appendValue(const platform::Value& value, std::string_view label, std::string_view identifier);
    /// Brings the entries into the order of `labels`. Those of one label, and those with a label that is not
    /// named, keep their order; the latter come last.
    void _sortLabelsUsing(const std::vector<std::string>& labels);
    /// Moves one entry within the list.
    void _moveContentsAt(ZRIndex from, ZRIndex to);
    enum class Updating { no, yes };
    /// Adds the entries of `other` with new identifiers. With `updating`, one whose label is known here
    /// replaces the value of the first entry of that label instead.
    void _combineWithMultiValue(const ZRMultiValue& other, Updating updating);

    platform::Ref<ZRMultiValue> copy() const override;

protected:
    ~ZRMutableMultiValue() override = default;
};
