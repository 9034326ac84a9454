// All rows of a store in memory, to be written again by plain SQLite.
#pragma once

#include "floor/Database.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace bench {

/// A value as SQLite keeps it, in 16 bytes.
struct Cell {
    /// The number itself, the bits of a floating one, or where the bytes begin.
    std::int64_t value = 0;
    std::uint32_t size = 0;
    int type = SQLITE_NULL;
};

/// What a store that the engine has filled holds: its own schema, every row, every indexed text.
///
/// The floor of an import is to write just this. Nothing here is written down a second time, so it follows
/// the engine's schema by itself.
///
/// Ownership: owns the rows. Threads: one. Errors: end the program.
class StoreRows {
public:
    static StoreRows read(const std::string& path);

    /// Makes the store at `path` with these rows, in one transaction: table by table, in order of their keys.
    void write(const std::string& path) const;

    std::size_t contacts() const { return _contacts; }
    /// The mean length of the indexed text of a card.
    double indexedBytesPerCard() const;

private:
    struct Table {
        std::string insert;
        std::size_t columns;
        /// A row after the other.
        std::vector<Cell> cells;
    };
    struct TextTable {
        std::string insert;
        /// The table's options, as statements.
        std::vector<std::string> options;
        std::vector<std::pair<std::int64_t, std::string>> texts;
    };

    Cell cellOf(const Statement& row, int column);
    void bindCell(Statement& statement, int parameter, const Cell& cell) const;
    void readTable(Database& store, const std::string& name);
    void readTextTable(Database& store, const std::string& name);

    /// The bytes of all text and data.
    std::string _bytes;
    std::vector<std::string> _schema;
    std::vector<Table> _tables;
    std::vector<TextTable> _textTables;
    std::size_t _contacts = 0;
};

} // namespace bench
