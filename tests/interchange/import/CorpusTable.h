// What the cards of other programs say, by the public standards, and what comes of them here.
#pragma once

#include <cstddef>
#include <span>

namespace test {

/// Stands for what the standards say.
inline constexpr const char* kSame = nullptr;

struct CorpusRow {
    const char* file;
    /// The number of the card in its file.
    std::size_t card;
    /// A property; "N" for the five parts of a name; "#" for the number of people in the file; "Note..." for
    /// how the note begins. Any other name is that of a line which has no property: its value is looked for
    /// in the note, and "told" stands for what the report names.
    const char* field;
    const char* expected;
    /// What the reader makes of it alone, without the preparation.
    const char* raw = kSame;
    /// What comes out where that is not what the standards say, and why.
    const char* prepared = kSame;
    const char* rule = nullptr;
};

std::span<const CorpusRow> corpusTable();

} // namespace test
