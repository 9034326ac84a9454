// The command line, read: which command, with which options.
#pragma once

#include "CommandTable.h"

/// What the command line asks for: a command to run, or a text to print.
struct Wish {
    /// Null where a text was asked for.
    const Command* command = nullptr;
    Options options;
    std::string text;
};

/// What was typed. Anything that is not in the table of commands raises a Failure with status 2.
Wish readCommandLine(int argc, char** argv);
