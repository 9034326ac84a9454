// Which tables and indexes a model needs, as text to compare and as SQL to run.
#pragma once

#include "objectstore/Model.h"

#include <string>
#include <string_view>
#include <vector>

namespace objectstore {

/// One thing that a store of a model has.
struct SchemaPart {
    /// What is compared with the store's own list. One line.
    std::string line;
    /// Makes it. A column's is only for a table that is there already: a new table is made with its columns.
    std::string sql;
    /// The table of a column; empty for everything else.
    std::string columnOf;
    /// Fills a full-text table that was added to rows that are there; empty for everything else.
    std::string fill;
};

/// True for every row; makes the index of ids usable, where a table of roots that a text index follows has
/// one.
inline constexpr std::string_view kHasIdentity = "\"_key\" > 0";

/// Every part, in an order in which they can be made.
std::vector<SchemaPart> schemaParts(const Model& model);

/// The lines of all parts, sorted, each with its newline.
std::string schemaText(const Model& model);
/// 16 hexadecimal digits that stand for a schema's text.
std::string schemaHash(std::string_view schemaText);

/// The engine's own tables, the same in every store:
///
/// - `store_state`: one row with the number of the last commit, the last key given out, and the commit up to
///   which deletion records were thrown away;
/// - `store_meta`: named values (schema text and hash, identifier, the caller's metadata);
/// - `store_entity`: the number that stands for an entity in `_entity` columns;
/// - `store_deletion`: roots that were deleted, with the commit that did it.
extern const char kEngineTables[];

} // namespace objectstore
