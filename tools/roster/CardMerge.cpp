// How the differences of two texts of a card are applied to the card.
#include "CardMerge.h"

#include "core/ZRConstants.h"
#include "core/ZRMutableMultiValue.h"
#include "core/ZRPerson.h"

#include <algorithm>
#include <set>

using platform::Value;

namespace {

struct Entry {
    std::string identifier;
    std::string label;
    Value value;

    bool says(const Entry& other) const { return label == other.label && value == other.value; }
};

using Entries = std::vector<Entry>;
constexpr std::size_t kNone = static_cast<std::size_t>(-1);

Entries entriesOf(const Value& value)
{
    Entries entries;
    if (const auto* const values = value.as<ZRMultiValue>())
        for (ZRIndex at = 0; at < values->count(); ++at)
            entries.push_back(
                {values->identifierAtIndex(at), values->labelAtIndex(at), values->valueAtIndex(at)});
    return entries;
}

const Value& in(const CardProperties& properties, const std::string& name)
{
    static const Value absent;
    const auto at = properties.find(name);
    return at == properties.end() ? absent : at->second;
}

// ---- matching

using Likeness = bool (*)(const Entry&, const Entry&);
constexpr Likeness isSame = [](const Entry& a, const Entry& b) { return a.says(b); };
constexpr Likeness hasValue = [](const Entry& a, const Entry& b) { return a.value == b.value; };
constexpr Likeness hasLabel = [](const Entry& a, const Entry& b) { return a.label == b.label; };
constexpr Likeness isAny = [](const Entry&, const Entry&) { return true; };

/// For each of `from` the place of its like in `to`, or kNone: the best likeness first, each entry once.
std::vector<std::size_t> matched(
    const Entries& from, const Entries& to, std::initializer_list<Likeness> likenesses)
{
    std::vector<std::size_t> places(from.size(), kNone);
    std::vector<bool> isTaken(to.size());
    for (const Likeness alike : likenesses)
        for (std::size_t i = 0; i < from.size(); ++i)
            for (std::size_t j = 0; places[i] == kNone && j < to.size(); ++j)
                if (!isTaken[j] && alike(from[i], to[j])) {
                    places[i] = j;
                    isTaken[j] = true;
                }
    return places;
}

// ---- values

/// `held` with what differs between two values; of dictionaries key by key.
Value patched(const Value& held, const Value& before, const Value& after)
{
    if (before == after)
        return held;
    if (!held.isDictionary() || !before.isDictionary() || !after.isDictionary())
        return after;
    std::map<std::string, Value> parts;
    for (const auto& [key, part] : held.asDictionary()->entries())
        parts[key] = part;
    std::set<std::string> keys;
    for (const Value* side : {&before, &after})
        for (const auto& [key, part] : side->asDictionary()->entries())
            keys.insert(key);
    for (const auto& key : keys)
        if (before[key] != after[key])
            parts[key] = after[key];
    return Value::dictionary({parts.begin(), parts.end()});
}

Value patchedFlags(const Value& held, const Value& before, const Value& after)
{
    const auto changed = before.asInteger() ^ after.asInteger();
    return Value((held.asInteger() & ~changed) | (after.asInteger() & changed));
}

/// One multi-value, from the entries of a text to those of another.
class EntryMerge {
public:
    EntryMerge(const Value& before, const Value& after, const Value& stored, const Value& held)
        : _before(entriesOf(before)), _after(entriesOf(after)), _held(entriesOf(held))
    {
        const Entries known = entriesOf(stored);
        for (const auto place : matched(_before, known, {isSame, hasValue, hasLabel, isAny}))
            _identifiers.push_back(place == kNone ? std::string() : known[place].identifier);
    }

    Entries result()
    {
        const auto origins = matched(_after, _before, {isSame, hasValue, hasLabel});
        for (std::size_t i = 0; i < _after.size(); ++i)
            origins[i] == kNone ? add(_after[i]) : take(_after[i], origins[i]);
        for (std::size_t i = 0; i < _held.size(); ++i)
            if (!_seen.contains(_held[i].identifier) && !isRemoved(_held[i].identifier))
                _result.insert(
                    _result.begin() + static_cast<std::ptrdiff_t>(std::min(i, _result.size())), _held[i]);
        return std::move(_result);
    }

private:
    void add(const Entry& entry)
    {
        _result.push_back({ZRMultiValue::_generateIdentifier(), entry.label, entry.value});
    }

    /// What was in the text already. An entry that somebody removed meanwhile comes back only when it was
    /// changed here.
    void take(const Entry& after, std::size_t origin)
    {
        const Entry& before = _before[origin];
        const auto held = std::ranges::find(_held, _identifiers[origin], &Entry::identifier);
        if (held == _held.end())
            return before.says(after) ? void() : add(after);
        _seen.insert(held->identifier);
        _result.push_back({held->identifier, before.label == after.label ? held->label : after.label,
            patched(held->value, before.value, after.value)});
    }

    /// Of the entries that the text showed, those that are not seen are gone.
    bool isRemoved(const std::string& identifier) const
    {
        return std::ranges::find(_identifiers, identifier) != _identifiers.end();
    }

    const Entries _before, _after, _held;
    /// Of each entry of `before` the stored identifier, or empty.
    std::vector<std::string> _identifiers;
    Entries _result;
    std::set<std::string> _seen;
};

Value multiValueOf(const Entries& entries, const Value& held)
{
    if (entries.empty())
        return {};
    ZRMultiValue::Entries all;
    for (const auto& [identifier, label, value] : entries) {
        all.identifiers.push_back(identifier);
        all.labels.push_back(label);
        all.values.push_back(value);
    }
    const auto* const former = held.as<ZRMultiValue>();
    if (former && former->primaryIdentifier()
        && std::ranges::find(all.identifiers, *former->primaryIdentifier()) != all.identifiers.end())
        all.primaryIdentifier = former->primaryIdentifier();
    return Value(platform::makeRef<ZRMutableMultiValue>(std::move(all)));
}

bool isMulti(const Value& value) { return value.as<ZRMultiValue>() != nullptr; }

/// The same as far as a text can tell: identifiers differ from reading to reading.
bool saysSame(const Value& a, const Value& b)
{
    return isMulti(a) && isMulti(b) ? std::ranges::equal(
               entriesOf(a), entriesOf(b), [](const Entry& x, const Entry& y) { return x.says(y); })
                                    : a == b;
}

Value merged(
    const std::string& name, const Value& before, const Value& after, const Value& stored, const Value& held)
{
    if (isMulti(before) || isMulti(after))
        return multiValueOf(EntryMerge(before, after, stored, held).result(), held);
    return name == zr::kZRPersonFlags ? patchedFlags(held, before, after) : after;
}

} // namespace

bool applyDifferences(
    const CardProperties& before, const CardProperties& after, const CardProperties& stored, ZRPerson& person)
{
    std::set<std::string> names;
    for (const auto* side : {&before, &after})
        for (const auto& [name, value] : *side)
            names.insert(name);
    bool isChanged = false;
    for (const auto& name : names) {
        const Value &from = in(before, name), &to = in(after, name);
        if (saysSame(from, to))
            continue;
        person.setValue(merged(name, from, to, in(stored, name), person.valueForProperty(name)), name);
        isChanged = true;
    }
    return isChanged;
}
