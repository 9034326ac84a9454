// How a predicate is asked of the store: one SQL expression with bound values.
#include "objectstore/PredicateSQL.h"

#include "objectstore/PredicateKeys.h"
#include "objectstore/PredicateLiterals.h"
#include "objectstore/PredicateText.h"
#include "objectstore/ValueComparison.h"
#include "platform/text/Fold.h"
#include "platform/text/Utf.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/format.h>
#include <functional>
#include <map>

namespace objectstore {

using platform::Value;

namespace {

/// SQLite's parser has a stack of 100 entries, and one level of ours can take four of them.
constexpr int kMaximumNesting = 20;
/// Parts of one AND or OR are chained up to this many, then grouped: a chain is a deep tree to SQLite.
constexpr std::size_t kLongestChain = 50;
/// List elements that are bound one by one, where one JSON value cannot carry them exactly.
constexpr std::size_t kMostBoundElements = 200;
/// Below SQLite's own limit, with room for what the rest of the statement binds.
constexpr std::size_t kMostArguments = 30000;
constexpr std::int64_t kLargestExactReal = std::int64_t(1) << 53;

constexpr std::array<std::string_view, 6> kOperators{" = ?", " <> ?", " < ?", " <= ?", " > ?", " >= ?"};

bool isOrdering(Comparator comparator) { return comparator <= Comparator::greaterOrEqual; }

/// Keeps the rows of an entity apart from its table's others; empty when there are no others.
std::optional<Value> namesOfKinds(const Entity& entity, const Family& family)
{
    std::vector<Value> names;
    for (const Entity* other : family.entities)
        if (other->isKindOf(entity))
            names.emplace_back(other->name());
    if (names.size() == family.entities.size())
        return std::nullopt;
    return Value(*asJSON(names));
}

ComparisonKind kindOfColumn(AttributeType type)
{
    switch (type) {
    case AttributeType::string:
        return ComparisonKind::text;
    case AttributeType::integer:
    case AttributeType::real:
    case AttributeType::boolean:
        return ComparisonKind::number;
    case AttributeType::date:
        return ComparisonKind::date;
    case AttributeType::data:
        return ComparisonKind::data;
    default:
        return ComparisonKind::none;
    }
}

/// The value as SQLite holds it; absent when it cannot.
Value storable(const Value& value)
{
    if (value.isDate())
        return Value(value.asDate().seconds);
    if (value.isBoolean())
        return Value(value.asInteger());
    return value.isWideUnsigned() ? Value(value.asReal()) : value;
}

/// Whether a column of reals can be compared with it without SQLite rounding it first.
bool isExactAsReal(const Value& value)
{
    return !value.isInteger() || std::abs(static_cast<double>(value.asInteger())) <= kLargestExactReal;
}

/// A column, or what else stands for the left side of a comparison.
struct Column {
    std::string name;
    AttributeType type;
    /// True when it never is NULL.
    bool isAlwaysPresent = false;
    /// Compared are only these bits.
    std::optional<std::int64_t> mask = std::nullopt;
    /// An indexed column that holds the same text folded for case and diacritics, if there is one.
    std::string folded = {};
};

/// A key with this behind it is that of the same text folded for case and diacritics.
constexpr std::string_view kFoldedSuffix = "Normalized";

std::string foldedColumn(const Entity& entity, const Slot& slot)
{
    const Slot* folded = entity.slot(slot.key + std::string(kFoldedSuffix));
    return folded && (folded->flags & kIndexed) != 0 ? folded->column : std::string();
}

/// Whether an index over folded texts finds all that the test is true for. Both folds leave ASCII where it
/// is, so a text that begins with ASCII in any case begins so when it is folded further.
bool isFoundByFold(const StorePredicate::Comparison& test, Comparator comparator)
{
    return test.option != TextOption::exact && !test.mask && test.operand.value.isString()
        && !test.operand.value.asText().empty() && platform::isASCII(test.operand.value.asText())
        && (comparator == Comparator::equal || comparator == Comparator::beginsWith);
}

/// The three parts of a query over the pairs that a to-many relationship makes.
struct Link {
    std::string table;
    std::string near;
    std::string far;
};

class Translation {
public:
    explicit Translation(const SQLScope& scope) : _scope(scope) { }

    void ask(const StorePredicate& asked, const Entity& entity)
    {
        _entry = entryOf(entity, "_key");
        _isDriven = _scope.driver != nullptr;
        if (_isDriven)
            _root = entity.families().front()->table + "._key";
        predicate(asked, entity);
    }

    std::optional<SQLCondition> finished() &&
    {
        _condition.sql = "(" + _condition.sql + ")";
        if (!_possible || _condition.arguments.size() > kMostArguments)
            return std::nullopt;
        return std::move(_condition);
    }

private:
    using Write = std::function<void()>;
    /// Writes the test of what a key path ends at: a slot, or the object itself without one.
    using WriteLeaf = std::function<void(const Entity&, const Slot*)>;

    void predicate(const StorePredicate& predicate, const Entity& entity)
    {
        std::visit([&](const auto& form) { translate(form, entity); }, predicate.form());
    }

    void write(std::string_view sql) { _condition.sql += sql; }
    void bind(const Value& value) { _condition.arguments.push_back(storable(value)); }
    void cannot() { _possible = false; }

    void bracketed(std::string_view before, const Write& inner)
    {
        if (++_nesting > kMaximumNesting)
            cannot();
        write(before);
        write("(");
        if (_possible)
            inner();
        write(")");
        --_nesting;
    }

    /// Behind a WHERE of its own, a NULL counts as false again.
    void unnegated(const Write& inner)
    {
        const bool before = std::exchange(_isNegated, false);
        inner();
        _isNegated = before;
    }

    /// Writes a test of the column that is NULL for an absent value; under a NOT it must be false instead.
    void present(const Column& column, const Write& test)
    {
        if (_isNegated && !column.isAlwaysPresent)
            bracketed("", [&] {
                write(column.name + " IS NOT NULL AND ");
                test();
            });
        else
            test();
    }

    void operand(const Column& column)
    {
        write(column.mask ? "(" + column.name + " & ?)" : column.name);
        if (column.mask)
            bind(Value(*column.mask));
    }

    void isPresent(const Column& column)
    {
        write(column.isAlwaysPresent ? "1" : column.name + " IS NOT NULL");
    }

    void translate(const StorePredicate::Constant& form, const Entity&) { write(form.value ? "1" : "0"); }

    void translate(const StorePredicate::Negation& negation, const Entity& entity)
    {
        const bool before = std::exchange(_isNegated, true);
        bracketed("NOT ", [&] { undriven([&] { predicate(*negation.part, entity); }); });
        _isNegated = before;
    }

    /// Whether the rows that are wanted are those of one candidate of the driver.
    bool isAskedOfRoot() const { return _isDriven && _entry.key == "_key"; }

    /// What is not asked of every candidate of the driver says nothing of them.
    void undriven(const Write& inner)
    {
        const bool before = std::exchange(_isDriven, false);
        inner();
        _isDriven = before;
    }

    void translate(const StorePredicate::Compound& compound, const Entity& entity)
    {
        const auto parts = withRowTestsJoined(compound);
        const auto all = [&] { chain(parts, compound.isAll, 0, parts.size(), entity); };
        if (compound.isAll || compound.parts.size() == 1)
            all();
        else
            undriven([&] { any(parts, entity, all); });
    }

    /// Where all parts are narrowed by one query of the trigram index, it is asked once.
    void any(const std::vector<PredicateRef>& parts, const Entity& entity, const Write& all)
    {
        const Filter common = filterOfAll(parts, entity);
        if (!common.entry.entity)
            return all();
        filtered(common, [&] { bracketed("", all); });
    }

    /// "Some row has a, or some row has b" is "some row has a or b", and "no row has a, and none b" is "no
    /// row has a or b": so the rows are read once.
    static std::vector<PredicateRef> withRowTestsJoined(const StorePredicate::Compound& compound)
    {
        const Rows joinable = compound.isAll ? Rows::none : Rows::some;
        std::vector<PredicateRef> parts;
        std::map<std::string_view, std::vector<PredicateRef>> conditions;
        for (const auto& part : compound.parts) {
            const auto* test = std::get_if<StorePredicate::RowTest>(&part->form());
            if (test && test->condition && test->wanted == joinable)
                conditions[test->relationship].push_back(test->condition);
            else
                parts.push_back(part);
        }
        for (auto& [relationship, any] : conditions)
            parts.push_back(
                StorePredicate::rows(relationship, joinable, StorePredicate::any(std::move(any))));
        return parts;
    }

    void chain(const std::vector<PredicateRef>& parts, bool isAll, std::size_t from, std::size_t to,
        const Entity& entity)
    {
        std::size_t step = 1;
        while ((to - from) / step > kLongestChain)
            step *= kLongestChain;
        for (std::size_t at = from; at < to && _possible; at += step) {
            if (at != from)
                write(isAll ? " AND " : " OR ");
            bracketed("", [&] {
                if (step == 1)
                    predicate(*parts[at], entity);
                else
                    chain(parts, isAll, at, std::min(to, at + step), entity);
            });
        }
    }

    void translate(const StorePredicate::RowTest& test, const Entity& entity)
    {
        const Slot& slot = toManySlot(entity, test.relationship);
        write(test.wanted == Rows::some ? "_key IN " : "_key NOT IN ");
        const Write condition = [&] { across(slot, [&] { predicate(*test.condition, *slot.destination); }); };
        if (slot.kind == SlotKind::toMany)
            return rowsOf(*slot.destination, slot.inverse->column, test.condition ? condition : Write());
        bracketed("", [&] {
            write("SELECT " + slot.column + " FROM " + slot.table);
            if (!test.condition)
                return;
            write(" WHERE " + slot.farColumn + " IN ");
            rowsOf(*slot.destination, "_key", condition);
        });
    }

    /// `(SELECT column FROM … WHERE condition)` over all rows of an entity; the column is never NULL there.
    void rowsOf(const Entity& entity, const std::string& column, const Write& condition)
    {
        bracketed("", [&] {
            std::string_view separator;
            for (const Family* family : entity.families()) {
                write(separator);
                rowsOf(entity, *family, column, condition);
                separator = " UNION ALL ";
            }
        });
    }

    void rowsOf(const Entity& entity, const Family& family, const std::string& column, const Write& condition)
    {
        write("SELECT " + column + " FROM " + family.table);
        std::string_view separator = " WHERE ";
        const auto where = [&](std::string_view test) {
            write(separator);
            write(test);
            separator = " AND ";
        };
        if (column != "_key")
            where(isAskedOfRoot() ? column + " = " + _root : column + " IS NOT NULL");
        if (const auto names = namesOfKinds(entity, family)) {
            where("_entity IN (SELECT number FROM store_entity WHERE name IN"
                  " (SELECT value FROM json_each(?)))");
            bind(*names);
        }
        if (!condition)
            return;
        where("");
        bracketed("", [&] { unnegated(condition); });
    }

    /// Walks to the end of the path and lets `leaf` write the test there.
    void follow(const Entity& entity, std::string_view path, const WriteLeaf& leaf)
    {
        const auto [key, rest] = SplitPath(path);
        if (rest.empty())
            return leaf(entity, key == kSelf ? nullptr : &lastSlot(entity, key));
        if (key == kSelf)
            return follow(entity, rest, leaf);
        const Slot& slot = toOneSlot(entity, key);
        behind(slot, [this, &slot, rest = rest, &leaf] { follow(*slot.destination, rest, leaf); });
    }

    /// `inner` is a condition on the object that the to-one leads to.
    void behind(const Slot& slot, const Write& inner)
    {
        const auto throughIt = [&] { across(slot, inner); };
        if (slot.kind == SlotKind::toOneInverse) {
            write("_key IN ");
            rowsOf(*slot.destination, slot.inverse->column, throughIt);
        } else {
            present({slot.column, AttributeType::any}, [&] {
                write(slot.column + " IN ");
                rowsOf(*slot.destination, "_key", throughIt);
            });
        }
    }

    /// Writes a condition on what the slot leads to, knowing whether that was found by its owner's key, and
    /// whose text-index entry says something about it.
    void across(const Slot& slot, const Write& inner)
    {
        const bool isBehindOwner = leadsToParts(slot);
        Entry entry = entryOf(*slot.destination, "_key");
        if (isBehindOwner && _entry.entity && _entry.key == "_key")
            entry = {_entry.entity, slot.inverse->column};
        const bool ownerBefore = std::exchange(_isBehindOwner, isBehindOwner);
        const bool drivenBefore = std::exchange(_isDriven, isAskedOfRoot() && isBehindOwner);
        std::swap(_entry, entry);
        inner();
        std::swap(_entry, entry);
        _isDriven = drivenBefore;
        _isBehindOwner = ownerBefore;
    }

    void translate(const StorePredicate::Comparison& test, const Entity& entity)
    {
        if (_isDriven && _scope.driver->walked == &test)
            return write("1");
        const Value& right = constant(test.operand);
        const bool asksAbsence = right.isNothing() && test.comparator == Comparator::equal;
        if (asksAbsence && test.keyPath.find('.') != std::string::npos) {
            const bool before = std::exchange(_isNegated, true);
            bracketed("NOT ",
                [&] { undriven([&] { follow(entity, test.keyPath, leafOf(test, Comparator::notEqual)); }); });
            _isNegated = before;
            return;
        }
        follow(entity, test.keyPath, leafOf(test, test.comparator));
    }

    WriteLeaf leafOf(const StorePredicate::Comparison& test, Comparator comparator)
    {
        return [this, &test, comparator](const Entity& entity, const Slot* slot) {
            if (!slot)
                return reference(test, comparator, {"_key", AttributeType::any, true});
            if (slot->kind == SlotKind::toOne)
                return reference(test, comparator, {slot->column, AttributeType::any});
            if (slot->kind == SlotKind::toOneInverse)
                return referenceFromPart(test, comparator, *slot);
            attribute(test, comparator, entity, *slot);
        };
    }

    // Objects: a column that holds keys.

    /// The key that an object has in this store, or absent when it is no object, or not in this store.
    Value keyInStore(const Value& value) const
    {
        const auto* object = value.as<const StoreObject>();
        const auto id = object ? object->storeId() : StoreId();
        return id.store == _scope.store && id.key > 0 ? Value(id.key) : Value();
    }

    void reference(const StorePredicate::Comparison& test, Comparator comparator, const Column& column)
    {
        const Value& right = constant(test.operand);
        if (test.mask)
            return value(test, comparator, column);
        if (right.isNothing())
            return absence(comparator, column);
        if (comparator == Comparator::in)
            return present(column, [&] { inKeys(column, right); });
        const Value key = keyInStore(right);
        if (comparator == Comparator::equal && !key.isAbsent())
            return sameAs(column, " = ?", key);
        if (comparator == Comparator::notEqual)
            return key.isAbsent() ? isPresent(column) : sameAs(column, " <> ?", key);
        const bool isOrEqual =
            comparator == Comparator::lessOrEqual || comparator == Comparator::greaterOrEqual;
        return isOrEqual && !key.isAbsent() ? sameAs(column, " = ?", key) : write("0");
    }

    void sameAs(const Column& column, std::string_view comparison, const Value& value)
    {
        present(column, [&] {
            operand(column);
            write(comparison);
            bind(value);
        });
    }

    void inKeys(const Column& column, const Value& list)
    {
        std::string json = "[";
        for (const auto& element : list.asArray())
            if (const auto key = keyInStore(element); !key.isAbsent())
                fmt::format_to(std::back_inserter(json), "{}{}", json.size() > 1 ? "," : "", key.asInteger());
        inJSON(column, json + "]");
    }

    void inJSON(const Column& column, std::string json)
    {
        operand(column);
        write(" IN (SELECT value FROM json_each(?))");
        bind(Value(std::move(json)));
    }

    /// Compares the object whose own to-one points here.
    void referenceFromPart(const StorePredicate::Comparison& test, Comparator comparator, const Slot& slot)
    {
        const bool asksAbsence = constant(test.operand).isNothing() && comparator == Comparator::equal;
        write(asksAbsence ? "_key NOT IN " : "_key IN ");
        const auto wanted = asksAbsence ? Comparator::notEqual : comparator;
        rowsOf(*slot.destination, slot.inverse->column, [&] {
            reference(test, wanted, {"_key", AttributeType::any, true});
        });
    }

    void absence(Comparator comparator, const Column& column)
    {
        if (comparator == Comparator::equal)
            write(column.isAlwaysPresent ? "0" : column.name + " IS NULL");
        else if (comparator == Comparator::notEqual)
            isPresent(column);
        else
            write("0");
    }

    // Attributes: a column that holds values.

    void attribute(
        const StorePredicate::Comparison& test, Comparator comparator, const Entity& entity, const Slot& slot)
    {
        if (slot.kind == SlotKind::largeAttribute)
            return largeAttribute(test, comparator, slot);
        if (slot.kind != SlotKind::attribute || !slot.hasColumn())
            return cannot();
        Column column{slot.column, slot.type};
        if (isFoundByFold(test, comparator))
            column.folded = foldedColumn(entity, slot);
        const auto plain = [&] { value(test, comparator, column); };
        const Filter filter = filterOf(test, comparator, entity, slot);
        if (!filter.entry.entity)
            return plain();
        if (isWholeTrigram(test, comparator, slot))
            return inIndex(filter);
        filtered(filter, plain);
    }

    void largeAttribute(const StorePredicate::Comparison& test, Comparator comparator, const Slot& slot)
    {
        const bool asksAbsence = constant(test.operand).isNothing() && comparator == Comparator::equal;
        write(asksAbsence ? "_key NOT IN " : "_key IN ");
        const auto wanted = asksAbsence ? Comparator::notEqual : comparator;
        bracketed("", [&] {
            write("SELECT _key FROM " + slot.table + " WHERE ");
            unnegated([&] { value(test, wanted, {"value", slot.type}); });
        });
    }

    // Texts: the trigram index names the few rows that a test can be true for.

    /// The entity whose entries hold the texts of the rows at hand, and the column with the entries' row ids.
    struct Entry {
        const Entity* entity = nullptr;
        std::string key;

        bool operator==(const Entry&) const = default;
    };

    static Entry entryOf(const Entity& entity, std::string_view key)
    {
        return entity.textEntry() ? Entry{entity.textEntry(), std::string(key)} : Entry();
    }

    /// Which of these entries a test can be true for, as a full-text query.
    struct Filter {
        Entry entry;
        std::string trigrams;

        bool operator==(const Filter&) const = default;
    };

    /// What narrows the test; no entry when nothing does, or it would not help.
    Filter filterOf(const StorePredicate::Comparison& test, Comparator comparator, const Entity& entity,
        const Slot& slot) const
    {
        const bool isOwnEntry = &slot == entity.textIndex();
        const bool isByIndex = (slot.flags & (kIndexed | kUnique)) != 0 && test.option == TextOption::exact
            && (comparator == Comparator::equal || comparator == Comparator::beginsWith);
        const bool isByFold = isFoundByFold(test, comparator) && !foldedColumn(entity, slot).empty();
        const bool mayFilter = !isByFold && _scope.usesTextIndex && !_isNegated && !_isDriven && !_isFiltered
            && !isByIndex && (isOwnEntry ? _isBehindOwner : _entry.entity != nullptr);
        if (!mayFilter)
            return {};
        auto trigrams = necessaryTrigrams(test, comparator, slot);
        if (!trigrams || !(isOwnEntry || (_scope.hasEveryEntry && _scope.hasEveryEntry())))
            return {};
        return {isOwnEntry ? Entry{&entity, entity.owner()->column} : _entry, std::move(*trigrams)};
    }

    /// What narrows all of these parts in the same way; no entry when they are not so.
    Filter filterOfAll(const std::vector<PredicateRef>& parts, const Entity& entity) const
    {
        Filter common;
        for (const auto& part : parts) {
            const auto* test = std::get_if<StorePredicate::Comparison>(&part->form());
            const auto [key, rest] = SplitPath(test ? std::string_view(test->keyPath) : kSelf);
            if (key == kSelf || !rest.empty())
                return {};
            Filter filter = filterOf(*test, test->comparator, entity, lastSlot(entity, key));
            if (!filter.entry.entity || (common.entry.entity && common != filter))
                return {};
            common = std::move(filter);
        }
        return common;
    }

    void inIndex(const Filter& filter)
    {
        const std::string table = filter.entry.entity->textTable();
        write(fmt::format("{} IN (SELECT rowid FROM {} WHERE {} MATCH ?)", filter.entry.key, table, table));
        bind(Value(filter.trigrams));
    }

    void filtered(const Filter& filter, const Write& test)
    {
        bracketed("", [&] {
            inIndex(filter);
            write(" AND ");
            const bool before = std::exchange(_isFiltered, true);
            test();
            _isFiltered = before;
        });
    }

    void value(const StorePredicate::Comparison& test, Comparator comparator, const Column& column)
    {
        if (!test.mask)
            return plainValue(test, comparator, column);
        const bool isNumber = kindOfColumn(column.type) == ComparisonKind::number;
        plainValue(test, comparator,
            {isNumber ? column.name : "NULL", AttributeType::integer, false,
                isNumber ? test.mask : std::nullopt});
    }

    void plainValue(const StorePredicate::Comparison& test, Comparator comparator, const Column& column)
    {
        const Value& right = constant(test.operand);
        const auto kind = kindOfColumn(column.type);
        if (kind == ComparisonKind::none)
            return cannot();
        if (right.isNothing())
            return absence(comparator, column);
        if (comparator == Comparator::in)
            return inList(test, right, column, kind);
        if (comparisonKind(right) != kind)
            return comparator == Comparator::notEqual ? isPresent(column) : write("0");
        if (kind == ComparisonKind::text)
            return text(comparator, test.option, right, column);
        if (!isOrdering(comparator))
            return write("0");
        if (column.type == AttributeType::real && !isExactAsReal(right))
            return cannot();
        sameAs(column, kOperators[static_cast<std::size_t>(comparator)], right);
    }

    void text(Comparator comparator, TextOption option, const Value& right, const Column& column)
    {
        const std::string wanted = folded(right.asText(), option);
        if (wanted.empty() && !isOrdering(comparator))
            return isPresent(column);
        if (option != TextOption::exact || comparator == Comparator::endsWith)
            return foldedText(comparator, option, wanted, column);
        if (isOrdering(comparator))
            return sameAs(column, kOperators[static_cast<std::size_t>(comparator)], Value(wanted));
        present(column, [&] {
            if (comparator == Comparator::contains) {
                write("store_holds(" + column.name + ", ?)");
                bind(Value(wanted));
            } else {
                write(column.name + " >= ? AND " + column.name + " < ?");
                bind(Value(wanted));
                bind(Value(behindAllWithPrefix(wanted)));
            }
        });
    }

    void foldedText(Comparator comparator, TextOption option, const std::string& wanted, const Column& column)
    {
        if (column.folded.empty() || _isNegated)
            return textFunction(comparator, option, wanted, column);
        bracketed("", [&] {
            write(column.folded + " >= ? AND " + column.folded + " < ? AND ");
            const std::string first = platform::foldCaseAndDiacritics(wanted);
            bind(Value(first));
            bind(Value(behindAllWithPrefix(first)));
            textFunction(comparator, option, wanted, column);
        });
    }

    /// The function answers false for NULL by itself.
    void textFunction(
        Comparator comparator, TextOption option, const std::string& wanted, const Column& column)
    {
        write(fmt::format("store_text({}, {}, {}, ?)", column.name, static_cast<int>(comparator),
            static_cast<int>(option)));
        bind(Value(wanted));
    }

    // Lists: of the elements only those count that the column can hold.

    void inList(
        const StorePredicate::Comparison& test, const Value& list, const Column& column, ComparisonKind kind)
    {
        std::vector<Value> elements;
        for (const auto& element : list.asArray())
            if (comparisonKind(element) == kind)
                elements.push_back(element);
        if (elements.empty())
            return write("0");
        if (kind == ComparisonKind::text && test.option != TextOption::exact)
            return inFoldedList(test.option, elements, column);
        if (column.type == AttributeType::real && !std::ranges::all_of(elements, isExactAsReal))
            return cannot();
        if (const auto json = asJSON(elements))
            return present(column, [&] { inJSON(column, *json); });
        if (elements.size() > kMostBoundElements)
            return cannot();
        present(column, [&] {
            operand(column);
            write(" IN (");
            for (std::size_t i = 0; i < elements.size(); ++i) {
                write(i ? ", ?" : "?");
                bind(elements[i]);
            }
            write(")");
        });
    }

    void inFoldedList(TextOption option, const std::vector<Value>& texts, const Column& column)
    {
        if (texts.size() > kMostBoundElements)
            return cannot();
        bracketed("", [&] {
            for (std::size_t i = 0; i < texts.size(); ++i) {
                write(i ? " OR " : "");
                textFunction(Comparator::equal, option, folded(texts[i].asText(), option), column);
            }
        });
    }

    // Groups of groups.

    void translate(const StorePredicate::Membership& membership, const Entity& asked)
    {
        const Value& group = constant(membership.group);
        const Value key = keyInStore(group);
        if (key.isAbsent())
            return write("0");
        const Entity& entity = group.as<const StoreObject>()->entity();
        const Slot& memberSlot = twoWaySlot(entity, membership.members);
        if (!asked.isKindOf(*memberSlot.destination))
            return write("0");
        const auto members = linkOf(memberSlot);
        const auto children = linkOf(twoWaySlot(entity, membership.children));
        write("_key IN ");
        bracketed("", [&] {
            write("WITH RECURSIVE below(id) AS (SELECT ?");
            bind(key);
            write(fmt::format(" UNION SELECT {} FROM {} JOIN below ON {} = id)", children.far, children.table,
                children.near));
            write(fmt::format(
                " SELECT {} FROM {} JOIN below ON {} = id", members.far, members.table, members.near));
        });
    }

    Link linkOf(const Slot& slot)
    {
        if (slot.kind == SlotKind::manyToMany)
            return {slot.table, slot.column, slot.farColumn};
        if (slot.destination->families().size() != 1)
            cannot();
        return {slot.destination->families().front()->table, slot.inverse->column, "_key"};
    }

    bool _possible = true;
    bool _isNegated = false;
    /// The rows at hand were found by their owner's key, so they have one.
    bool _isBehindOwner = false;
    /// The driver names the roots to ask, and each is asked by itself: its parts are those with this owner.
    bool _isDriven = false;
    /// Whether a filter around the test at hand has asked the index already.
    bool _isFiltered = false;
    std::string _root;
    Entry _entry;
    int _nesting = 0;
    SQLScope _scope;
    SQLCondition _condition;
};

} // namespace

SQLCondition driverQuery(const TextDriver& driver)
{
    const Entity& entry = *driver.entry;
    if (!driver.walked)
        return {fmt::format(
                    "SELECT rowid AS \"_hit\" FROM {0} WHERE {0} MATCH ? ORDER BY rowid", entry.textTable()),
            {Value(driver.query)}};
    return {fmt::format("SELECT {0} AS \"_hit\" FROM {1} WHERE {0} > 0 AND store_holds({2}, ?) ORDER BY {0}",
                entry.owner()->column, entry.family()->table, entry.textIndex()->column),
        {driver.walked->operand.value}};
}

SQLCondition walkQuery(const TextDriver& driver)
{
    const Entity& entry = *driver.entry;
    return {fmt::format("SELECT {} FROM {} WHERE store_holds({}, ?)", entry.owner()->column,
                entry.family()->table, entry.textIndex()->column),
        {driver.walked->operand.value}};
}

std::optional<SQLCondition> translate(
    const StorePredicate& predicate, const Entity& entity, const SQLScope& scope)
{
    Translation translation(scope);
    translation.ask(predicate, entity);
    return std::move(translation).finished();
}

} // namespace objectstore
