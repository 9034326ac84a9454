// What a test has a forked child do, which has the test's memory and one thread of it.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

namespace test {

/// Whether `work` answers true in a forked child.
template <class Work>
bool inForkedChild(Work&& work)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(work() ? 0 : 1);
    int status = -1;
    waitpid(child, &status, 0);
    return status == 0;
}

} // namespace test
