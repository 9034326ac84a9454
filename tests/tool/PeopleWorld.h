// A roster of a few telling people, for tests of what finds and groups them.
#pragma once

#include "tool/ToolWorld.h"

namespace test {

/// A world whose roster holds Ana Lima, Ben Ek, Chloé Dubois, Dan Analund and the company Anvil Works.
class PeopleWorld : public ToolTest {
protected:
    void SetUp() override;
};

} // namespace test
