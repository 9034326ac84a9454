// Editing multi-values.
#include "core/ZRMutableMultiValue.h"

#include "core/ZRFailure.h"

#include <algorithm>

using platform::Ref;
using platform::Value;

namespace {

/// Takes the element at `from` out and puts it back at `to`.
template <class T>
void moveElement(std::vector<T>& list, ZRIndex from, ZRIndex to)
{
    const auto at = [&](ZRIndex index) { return list.begin() + index; };
    if (from < to)
        std::rotate(at(from), at(from + 1), at(to + 1));
    else
        std::rotate(at(to), at(from), at(from + 1));
}

} // namespace

ZRMutableMultiValue::ZRMutableMultiValue(Entries entries) : ZRMultiValue(std::move(entries))
{
    _entries.labels.resize(_entries.identifiers.size());
    _entries.values.resize(_entries.identifiers.size());
}

void ZRMutableMultiValue::reserve(std::size_t entries)
{
    _entries.identifiers.reserve(entries);
    _entries.labels.reserve(entries);
    _entries.values.reserve(entries);
}

std::string ZRMutableMultiValue::addValue(const Value& value, std::string_view label)
{
    return insertValue(value, label, count());
}

std::string ZRMutableMultiValue::insertValue(const Value& value, std::string_view label, ZRIndex index)
{
    zrRequire(!value.isAbsent() && !label.empty() && index >= 0 && index < count() + 1,
        "value != nil && label != nil && [label length] > 0 && index < ([self count] + 1)");
    std::string identifier = _generateIdentifier();
    _entries.identifiers.insert(_entries.identifiers.begin() + index, identifier);
    _entries.labels.emplace(_entries.labels.begin() + index, label);
    _entries.values.insert(_entries.values.begin() + index, value);
    if (!_entries.primaryIdentifier)
        _entries.primaryIdentifier = identifier;
    return identifier;
}

bool ZRMutableMultiValue::replaceLabelAtIndex(ZRIndex index, std::string_view label)
{
    zrRequire(
        hasIndex(index) && !label.empty(), "index < [self count] && label != nil && [label length] > 0");
    _entries.labels[static_cast<std::size_t>(index)] = label;
    return true;
}

bool ZRMutableMultiValue::replaceValueAtIndex(ZRIndex index, const Value& value)
{
    zrRequire(hasIndex(index) && !value.isAbsent(), "index < [self count] && value != nil");
    _entries.values[static_cast<std::size_t>(index)] = value;
    return true;
}

bool ZRMutableMultiValue::removeValueAndLabelAtIndex(ZRIndex index)
{
    zrRequire(hasIndex(index), "index < [self count]");
    const bool wasPrimary =
        _entries.primaryIdentifier == _entries.identifiers[static_cast<std::size_t>(index)];
    _entries.identifiers.erase(_entries.identifiers.begin() + index);
    _entries.labels.erase(_entries.labels.begin() + index);
    _entries.values.erase(_entries.values.begin() + index);
    if (wasPrimary)
        _entries.primaryIdentifier = _entries.identifiers.empty()
            ? std::optional<std::string>()
            : std::optional<std::string>(_entries.identifiers.front());
    return true;
}

bool ZRMutableMultiValue::setPrimaryIdentifier(std::string_view identifier)
{
    if (std::ranges::find(_entries.identifiers, identifier) == _entries.identifiers.end())
        return false;
    _entries.primaryIdentifier = identifier;
    return true;
}

void ZRMutableMultiValue::_removeValue(const Value& value)
{
    // The argument may be one of our own values, which the first removal would end.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const Value wanted = value;
    for (ZRIndex i = count(); i-- > 0;)
        if (valueAtIndex(i) == wanted)
            removeValueAndLabelAtIndex(i);
}

void ZRMutableMultiValue::_appendValue(
    const Value& value, std::string_view label, std::string_view identifier)
{
    _entries.identifiers.emplace_back(identifier);
    _entries.labels.emplace_back(label);
    _entries.values.push_back(value);
}

void ZRMutableMultiValue::_sortLabelsUsing(const std::vector<std::string>& labels)
{
    ZRIndex sorted = 0;
    for (const std::string& label : labels)
        for (ZRIndex i = sorted; i < count(); ++i)
            if (labelAtIndex(i) == label)
                _moveContentsAt(i, sorted++);
}

void ZRMutableMultiValue::_moveContentsAt(ZRIndex from, ZRIndex to)
{
    zrRequire(hasIndex(from) && hasIndex(to), "index < [self count]");
    moveElement(_entries.identifiers, from, to);
    moveElement(_entries.labels, from, to);
    moveElement(_entries.values, from, to);
}

void ZRMutableMultiValue::_combineWithMultiValue(const ZRMultiValue& other, Updating updating)
{
    // A copy, for the case that somebody combines a multi-value with itself.
    const Ref<ZRMultiValue> source = other.copy();
    for (ZRIndex i = 0; i < source->count(); ++i) {
        const std::string& label = source->labelAtIndex(i);
        const auto known = std::ranges::find(_entries.labels, label);
        if (updating == Updating::yes && known != _entries.labels.end())
            replaceValueAtIndex(known - _entries.labels.begin(), source->valueAtIndex(i));
        else
            addValue(source->valueAtIndex(i), label);
    }
}

Ref<ZRMultiValue> ZRMutableMultiValue::copy() const
{
    return platform::makeRef<ZRMutableMultiValue>(_entries);
}
