// A roster of a few telling people, for tests of what finds and groups them.
#pragma once

#include "tool/ToolWorld.h"

#include <gmock/gmock.h>

namespace test {

/// A world whose roster holds Ana Lima, Ben Ek, Chloé Dubois, Dan Analund and the company Anvil Works.
class PeopleWorld : public testing::Test {
protected:
    void SetUp() override;

    /// The names in a JSON answer, in its order, with blanks between them.
    static std::string namesIn(const Json& records);
    /// Those that `roster --json words…` prints.
    std::string names(const std::vector<std::string>& words) const { return namesIn(world.json(words)); }
    /// Runs it and wants status 0.
    Ended done(const std::vector<std::string>& words) const;
    /// Wants that status, nothing on standard output and one line on standard error that has the text.
    void expectRefusal(const std::vector<std::string>& words, int status, const std::string& text) const;

    ToolWorld world;
};

} // namespace test
