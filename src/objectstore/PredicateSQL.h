// How a predicate is asked of the store: one SQL expression with bound values.
#pragma once

#include "objectstore/Model.h"
#include "objectstore/StorePredicate.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

struct sqlite3;

namespace objectstore {

struct TextDriver;

/// An SQL expression over the columns of one family's table, true for the rows that fulfil a predicate.
///
/// It names the columns bare, so it stands in a statement whose innermost FROM is that one table. It is never
/// NULL where it matters: behind WHERE and as the operand of AND and OR there.
struct SQLCondition {
    std::string sql;
    /// What the question marks stand for, in order: absent, integer, real, string or data.
    std::vector<platform::Value> arguments;
};

/// What a translation may rely on.
struct SQLScope {
    /// The number of the store that is asked: objects of others are in no row of it.
    std::uint32_t store = 0;
    /// Whether the text tables may be used as a filter.
    bool usesTextIndex = true;
    /// Whether each root has its entry there, asked when it matters: else only tests of the indexed text
    /// itself are filtered.
    std::function<bool()> hasEveryEntry = {};
    /// The statement takes its rows from it, joined as "_hit" to the keys of the family's table.
    const TextDriver* driver = nullptr;
};

/// The predicate as an expression over rows of `entity`, whatever family of it the statement reads. Which of
/// the table's entities count is not its affair.
///
/// Absent when SQL cannot answer: it asks a computed or transient key, is deeper than SQLite's parser takes,
/// or binds a list that no single value can carry. `matches` can always.
/// Throws std::invalid_argument for an unknown key or a variable without a value.
std::optional<SQLCondition> translate(
    const StorePredicate& predicate, const Entity& entity, const SQLScope& scope);

/// The driver as a query that answers keys as "_hit", ascending.
SQLCondition driverQuery(const TextDriver& driver);

/// The same for one that asks each entry: keys in the order in which the entries lie, absent or 0 for an
/// entry without owner. Twice as fast for who wants all of them.
SQLCondition walkQuery(const TextDriver& driver);

/// Makes the functions that translated conditions call known to a connection. Answers SQLite's result code.
int registerPredicateFunctions(sqlite3* connection);

/// The entities whose unsaved changes can alter the answer for an object of `entity` that is unchanged
/// itself, and has no changed part or link: what stands behind a relationship that is not to a part of the
/// object. While the context has a change in one of them, only `matches` is right for every object.
std::vector<const Entity*> entitiesBehind(const StorePredicate& predicate, const Entity& entity);

} // namespace objectstore
