// How rows come out of the store's tables.
#pragma once

#include "objectstore/StoreState.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace objectstore {

/// `"_key", "_version", "_entity"` and every column of the family: what `readRow` expects a statement to
/// give.
std::string rowColumns(const Family& family);
/// How many columns these are.
int countOfRowColumns(const Family& family);

/// What stands in a column, its text and bytes alive until the statement's next step.
FieldValue readField(const sqlite::Statement& statement, int column);

/// The row that the statement stands on; shared with whoever holds it already. Null for an entity that the
/// model does not know.
RowRef readRow(StoreState& store, const Family& family, const sqlite::Statement& statement);

/// The row of that key, or none.
RowRef findRow(StoreState& store, const Family& family, std::int64_t key);

/// "[1,2,3]", to be bound as one value and read with json_each.
std::string jsonOf(std::span<const std::int64_t> keys);

/// Binds one field.
void bindField(sqlite::Statement& statement, int parameter, const FieldValue& value);

} // namespace objectstore
