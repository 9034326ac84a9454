// The changed slots of one object.
#pragma once

#include "objectstore/Model.h"
#include "platform/value/Value.h"

#include <array>
#include <bit>
#include <cstdint>
#include <vector>

namespace objectstore {

/// Values that lie over an object's row, by slot: changed ones, and derived ones that are only kept.
///
/// It holds attributes and the keys of to-one relationships. Of other relationships it only notes that they
/// changed.
///
/// Ownership: owns its values.
/// Threads:   like a plain container.
/// Errors:    none.
class Overlay {
public:
    /// Null when the row's own value counts.
    const platform::Value* find(const Slot& slot) const
    {
        return _present.has(slot.index) ? &_values[_present.rank(slot.index)] : nullptr;
    }
    bool isChanged(const Slot& slot) const { return _changed.has(slot.index); }
    bool hasChanges() const { return _changed.any(); }

    void change(const Slot& slot, platform::Value value)
    {
        put(slot, std::move(value));
        _changed.add(slot.index);
    }
    /// Keeps a value without counting it as a change; a change that is there stays one.
    void keep(const Slot& slot, platform::Value value) { put(slot, std::move(value)); }
    void noteChange(const Slot& slot) { _changed.add(slot.index); }

    void remove(const Slot& slot)
    {
        if (_present.has(slot.index))
            _values.erase(_values.begin() + static_cast<std::ptrdiff_t>(_present.rank(slot.index)));
        _present.remove(slot.index);
        _changed.remove(slot.index);
    }

    /// Forgets what was only kept, save for transient values.
    void removeKept(const Entity& entity)
    {
        for (const Slot* slot : entity.slots())
            if (_present.has(slot->index) && !_changed.has(slot->index) && !slot->isTransient())
                remove(*slot);
    }
    /// Forgets everything but transient values; with none of them, which is the rule, all at once.
    void removeAllStored(const Entity& entity)
    {
        if (!_mayHoldTransient) {
            *this = Overlay();
            return;
        }
        for (const Slot* slot : entity.slots())
            if (!slot->isTransient())
                remove(*slot);
    }
    bool isEmpty() const { return _values.empty() && !_changed.any(); }

private:
    struct Marks {
        std::array<std::uint64_t, 2> words{};
        bool has(unsigned index) const { return (words[index / 64] >> (index % 64) & 1) != 0; }
        void add(unsigned index) { words[index / 64] |= std::uint64_t(1) << (index % 64); }
        void remove(unsigned index) { words[index / 64] &= ~(std::uint64_t(1) << (index % 64)); }
        bool any() const { return (words[0] | words[1]) != 0; }
        /// How many stand before `index`.
        std::size_t rank(unsigned index) const
        {
            const std::uint64_t below = (std::uint64_t(1) << (index % 64)) - 1;
            const int before = index < 64 ? 0 : std::popcount(words[0]);
            return static_cast<std::size_t>(before + std::popcount(words[index / 64] & below));
        }
    };

    void put(const Slot& slot, platform::Value value)
    {
        const auto at = static_cast<std::ptrdiff_t>(_present.rank(slot.index));
        if (_present.has(slot.index)) {
            _values[static_cast<std::size_t>(at)] = std::move(value);
            return;
        }
        if (_values.capacity() == 0)
            _values.reserve(8);
        _mayHoldTransient |= slot.isTransient();
        _values.insert(_values.begin() + at, std::move(value));
        _present.add(slot.index);
    }

    Marks _present;
    Marks _changed;
    bool _mayHoldTransient = false;
    std::vector<platform::Value> _values;
};

} // namespace objectstore
