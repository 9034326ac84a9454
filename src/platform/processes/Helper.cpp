// Where our own programs lie, and how the helper is woken.
#include "platform/processes/Helper.h"

#include "platform/files/Files.h"
#include "platform/processes/Launch.h"
#include "platform/processes/MessagePort.h"
#include "platform/run/Clock.h"
#include "platform/run/Log.h"
#include "platform/run/Mutex.h"
#include "platform/run/NeverDestroyed.h"
#include "platform/run/ProcessMark.h"
#include "platform/run/Thread.h"

#include <cstdlib>
#include <filesystem>
#include <initializer_list>

#include <dlfcn.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr double kSecondsToSend = 1.0;
constexpr double kLongestGoodbye = 1.0;

/// The directory of the library that this code is in, or of the program when it is part of one; without
/// symbolic links, because what lies beside a link to a directory (such as /lib) is not what lies beside the
/// directory.
std::string ownDirectory()
{
    Dl_info info{};
    std::filesystem::path file;
    if (dladdr(reinterpret_cast<const void*>(&ownProgram), &info) != 0 && info.dli_fname)
        file = info.dli_fname;
    std::error_code failure;
    if (!file.is_absolute())
        file = std::filesystem::read_symlink("/proc/self/exe", failure);
    const auto directory = std::filesystem::canonical(file.parent_path(), failure);
    return failure ? file.parent_path() : directory;
}

bool isProgram(const std::string& path) { return isPlainFile(path) && access(path.c_str(), X_OK) == 0; }

/// How many threads are about to wake the helper.
struct Waking {
    const ProcessMark mark;
    Mutex mutex;
    Condition changed;
    int underWay ZR_GUARDED_BY(mutex) = 0;

    void begin()
    {
        Lock lock(mutex);
        ++underWay;
    }
    void end()
    {
        Lock lock(mutex);
        --underWay;
        changed.notifyAll();
    }
    void waitForAll()
    {
        if (mark.isForeign())
            return;
        const auto& clock = Clock::current();
        const double deadline = clock.monotonic() + kLongestGoodbye;
        Lock lock(mutex);
        while (underWay > 0 && clock.wait(changed, mutex, deadline)) { }
    }
};

/// A short-lived program schedules something and ends: the helper must have heard of it.
Waking& waking()
{
    static const NeverDestroyed<Waking> only;
    static const int waits = std::atexit([] { only->waitForAll(); });
    static_cast<void>(waits);
    return *only;
}

void tellOrStartHelper()
{
    if (tellHelper())
        return;
    const auto program = ownProgram(kHelperProgram);
    if (!program)
        return log(std::string(kHelperProgram) + ": the helper program could not be located");
    if (const auto started = launch({.program = *program, .arguments = {"--foreground"}}); !started)
        log(started.error().text);
}

} // namespace

std::optional<std::string> ownProgram(const std::string& name)
{
    if (const char* const named = std::getenv("ROSTER_HELPER_DIR")) {
        const auto path = std::string(named).append("/").append(name);
        return isProgram(path) ? std::optional(path) : std::nullopt;
    }
    const auto own = ownDirectory();
    for (const auto* beside : {"/", "/../bin/", "/" ROSTER_HELPERS_FROM_LIBRARY "/"})
        if (const auto path = standardizedPath((own + beside).append(name)); isProgram(path))
            return path;
    return {};
}

bool tellHelper()
{
    auto port = MessagePort::connect(kHelperPort);
    return port && port->send(kLookAfterYourWork, {}, kSecondsToSend, 0, MessagePort::Reply::none);
}

void wakeHelper()
{
    auto& all = waking();
    if (all.mark.isForeign())
        return;
    all.begin();
    const bool started = startThread("roster-helper", [&all] {
        runLogged(tellOrStartHelper);
        all.end();
    });
    if (!started) {
        all.end();
        log("No thread to wake the helper");
    }
}

} // namespace platform
