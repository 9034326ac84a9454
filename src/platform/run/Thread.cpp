// What a thread of the library's own is given at its start.
#include "platform/run/Thread.h"

#include <csignal>
#include <system_error>
#include <thread>

#include <pthread.h>

namespace platform {

bool startThread(const char* name, Block body)
{
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    bool started = true;
    try {
        std::thread([name, run = std::move(body)] {
            pthread_setname_np(pthread_self(), name);
            runLogged(run);
        }).detach();
    } catch (const std::system_error&) {
        started = false;
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return started;
}

} // namespace platform
