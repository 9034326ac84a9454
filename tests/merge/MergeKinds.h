// Commands that bring cards together, for walks among all the others.
#pragma once

#include "commands/ApplicationHost.h"
#include "commands/CommandDriver.h"

namespace test {

/// Lets the last import of before be remembered: that it is forgotten is no part of the next one's step.
class Forgetless final : public ApplicationHost {
public:
    void clearLastImportGroup() override { }
};

/// All kinds of commands, those that merge cards a few times, so that they come often.
CommandDriver::Kinds allKindsWithMerges();

} // namespace test
