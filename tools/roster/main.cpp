// The tool: reads the command line, runs the command, and tells how it ended.
#include "CommandLine.h"

#include <csignal>
#include <exception>

int main(int argc, char** argv)
{
    // Whoever reads our output may stop; the write then fails and says so.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        const Wish wish = readCommandLine(argc, argv);
        if (wish.command)
            return wish.command->run(wish.options);
        print(wish.text);
        return exitStatus::done;
    } catch (const Failure& failure) {
        if (*failure.what() != '\0')
            complain(failure.what());
        return failure.status;
    } catch (const std::exception& error) {
        complain(error.what());
        return exitStatus::noStore;
    }
}
