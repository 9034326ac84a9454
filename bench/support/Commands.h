// Programs of several jobs: PROGRAM JOB PATH NUMBER.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>

namespace bench {

/// One job of a program: what to do with a path and a number above 0. Answers the exit status.
struct Command {
    std::string_view name;
    int (*run)(const std::string& path, std::size_t number);
};

/// Runs the job that the command line names; prints `usage` and answers 2 when it names none.
inline int runCommand(std::span<const Command> commands, std::span<char* const> arguments, const char* usage)
{
    std::size_t number = 0;
    if (arguments.size() == 4) {
        const std::string_view text = arguments[3];
        std::from_chars(text.data(), text.data() + text.size(), number);
    }
    for (const Command& command : commands)
        if (number > 0 && command.name == arguments[1])
            return command.run(arguments[2], number);
    std::fprintf(stderr, "usage: %s %s\n", arguments[0], usage);
    return 2;
}

} // namespace bench
