// What --help prints: a screen for the tool, and one for each command.
#pragma once

#include "CommandTable.h"

/// The screen of the tool itself.
std::string helpText();
/// The screen of a command: 24 lines of 80 columns at most.
std::string helpText(const Command& command);

/// What the option means, with the values that there are: "vcard3|json: The form".
std::string meaningOf(const Option& option);
