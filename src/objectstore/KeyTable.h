// A weak table of things that carry their own key.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace objectstore {

/// Finds a T by its integer key: one probe into one array of pointers.
///
/// It is not an owner: whoever dies takes itself out.
///
/// Ownership: borrows.
/// Threads:   like a plain container.
/// Errors:    none.
template <class T, std::int64_t (*keyOf)(const T&)>
class KeyTable {
public:
    T* find(std::int64_t key) const
    {
        if (_places.empty())
            return nullptr;
        for (std::size_t place = home(key); _places[place]; place = next(place))
            if (keyOf(*_places[place]) == key)
                return _places[place];
        return nullptr;
    }

    /// Puts it in the place of what had its key before, if anything had.
    void put(T& thing)
    {
        if ((_count + 1) * 2 > _places.size())
            grow();
        std::size_t place = home(keyOf(thing));
        while (_places[place] && keyOf(*_places[place]) != keyOf(thing))
            place = next(place);
        if (!_places[place])
            ++_count;
        _places[place] = &thing;
    }

    /// Takes it out, unless another stands under its key.
    void remove(const T& thing)
    {
        if (_places.empty())
            return;
        std::size_t place = home(keyOf(thing));
        while (_places[place] && _places[place] != &thing)
            place = next(place);
        if (!_places[place])
            return;
        --_count;
        closeGap(place);
    }

    std::size_t count() const { return _count; }

    template <class Visitor>
    void forEach(Visitor visit) const
    {
        for (T* thing : _places)
            if (thing)
                visit(*thing);
    }

    void clear()
    {
        _places.clear();
        _count = 0;
    }

private:
    std::size_t home(std::int64_t key) const
    {
        return (static_cast<std::uint64_t>(key) * 0x9e3779b97f4a7c15u) >> _shift;
    }
    std::size_t next(std::size_t place) const { return (place + 1) & (_places.size() - 1); }

    void grow()
    {
        const std::size_t size = _places.empty() ? 16 : _places.size() * 2;
        std::vector<T*> before = std::exchange(_places, std::vector<T*>(size));
        _shift = 64;
        for (std::size_t bits = size; bits > 1; bits /= 2)
            --_shift;
        for (T* thing : before)
            if (thing)
                place(*thing);
    }

    void place(T& thing)
    {
        std::size_t at = home(keyOf(thing));
        while (_places[at])
            at = next(at);
        _places[at] = &thing;
    }

    void closeGap(std::size_t gap)
    {
        for (std::size_t place = next(gap); _places[place]; place = next(place)) {
            const std::size_t wanted = home(keyOf(*_places[place]));
            const std::size_t mask = _places.size() - 1;
            if (((place - wanted) & mask) < ((place - gap) & mask))
                continue;
            _places[gap] = _places[place];
            gap = place;
        }
        _places[gap] = nullptr;
    }

    std::vector<T*> _places;
    std::size_t _count = 0;
    unsigned _shift = 64;
};

} // namespace objectstore
