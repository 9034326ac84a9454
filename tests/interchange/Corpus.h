// Where the files lie that tests of cards read: beside the project, in it, and beside the test.
#pragma once

#include "support/TextCases.h"

#include <cstdlib>

namespace test {

/// Cards of other programs, which are read where they lie; nothing of them is in the project. There may be
/// none.
inline std::filesystem::path corpusFolder()
{
    const char* const named = std::getenv("ROSTER_CORPUS");
    return named ? named : SOURCE_FOLDER "/../shared/corpus";
}

inline const std::filesystem::path kExampleCards = SOURCE_FOLDER "/examples/cards",
                                   kTestsOfCards = SOURCE_FOLDER "/tests/interchange";

} // namespace test
