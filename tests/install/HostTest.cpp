// Does the library leave its host as it is: signals, locale, directory, environment, outputs, whatever the
// roster is like?
#include "support/Role.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <sys/resource.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

using test::Role;
using test::Words;
namespace files = std::filesystem;

std::string dispositions()
{
    std::ostringstream text;
    for (int signal = 1; signal < NSIG; ++signal) {
        struct sigaction action { };
        sigaction(signal, nullptr, &action);
        text << signal << ": " << reinterpret_cast<void*>(action.sa_handler) << ' ' << action.sa_flags
             << '\n';
    }
    return text.str();
}

std::string limits()
{
    std::ostringstream text;
    for (const int resource : {RLIMIT_NOFILE, RLIMIT_CORE, RLIMIT_STACK, RLIMIT_FSIZE}) {
        rlimit limit{};
        getrlimit(static_cast<__rlimit_resource_t>(resource), &limit);
        text << resource << ": " << limit.rlim_cur << '\n';
    }
    return text.str();
}

/// Signals 32 and 33 are the C library's own: it blocks them and handles them as it needs, and starts
/// programs with both ignored.
constexpr std::uint64_t kOwnSignals = 0x180000000;

/// A line of signals, such as "SigBlk:", with what else is in it as a number.
std::uint64_t signalsIn(const std::string& line)
{
    return std::stoull(line.substr(line.find('\t')), nullptr, 16) & ~kOwnSignals;
}

/// What the kernel says of a thread of this process, as far as a host minds.
std::string kernelsView(const files::path& thread)
{
    std::ifstream status(thread / "status");
    std::ostringstream text;
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("Umask"))
            text << line << '\n';
        else if (line.starts_with("SigBlk") || line.starts_with("SigIgn"))
            text << line.substr(0, 6) << ":\t" << std::hex << signalsIn(line) << '\n';
    return text.str();
}

/// Whether a thread blocks every signal that can be blocked: all but SIGKILL and SIGSTOP. One that has ended
/// meanwhile does.
bool takesNoSignals(const files::path& thread)
{
    constexpr std::uint64_t kAll = 0xfffffffe7ffbfeff;
    const std::string view = kernelsView(thread);
    const auto at = view.find("SigBlk");
    return at == view.npos || (signalsIn(view.substr(at)) & kAll) == kAll;
}

/// A host's signals are delivered to any thread that does not block them.
std::string threadsThatTakeSignals()
{
    std::string text;
    for (const auto& thread : files::directory_iterator("/proc/self/task"))
        if (thread.path().filename() != std::to_string(getpid()) && !takesNoSignals(thread))
            text += "thread: " + kernelsView(thread);
    return text;
}

std::string hostState()
{
    std::string text = dispositions() + limits() + kernelsView("/proc/thread-self");
    text += std::string("locale ") + setlocale(LC_ALL, nullptr) + "\ndirectory "
        + files::current_path().string() + '\n';
    for (char** variable = environ; *variable; ++variable)
        text += std::string(*variable) + '\n';
    return text;
}

using Handle = const void*;

/// The lines of `after` that `before` has not.
std::string news(const std::string& before, const std::string& after)
{
    std::string text;
    std::istringstream lines(after);
    for (std::string line; std::getline(lines, line);)
        if (before.find(line + '\n') == std::string::npos)
            text += line + '\n';
    return text;
}

/// The library, loaded as a plug-in of a program would load it.
class Library {
public:
    Library() : _library(dlopen(ROSTER_LIBRARY, RTLD_NOW | RTLD_LOCAL)) { }
    ~Library() { dlclose(_library); }

    template <class Result, class... Arguments>
    Result call(const char* name, Arguments... arguments) const
    {
        return reinterpret_cast<Result (*)(Arguments...)>(dlsym(_library, name))(arguments...);
    }
    const char* word(const char* name) const { return static_cast<const char*>(dlsym(_library, name)); }

private:
    void* const _library;
};

/// Adds a card, saves, searches. Whether that works depends on the roster.
void useRoster(const Library& library)
{
    const auto roster = library.call<Handle>("ZRGetSharedRoster");
    const auto person = library.call<Handle>("ZRPersonCreate");
    const auto name = library.call<Handle, const char*>("ZRStringCreateWithUTF8", "Ana");
    const char* const first = library.word("kZRFirstNameProperty");
    library.call<bool, Handle, const char*, Handle>("ZRRecordSetValue", person, first, name);
    library.call<bool, Handle>("ZRSave", roster);
    const auto search = library.call<Handle, const char*, const char*, const char*, Handle, std::int32_t>(
        "ZRPersonCreateSearchElement", first, nullptr, nullptr, name, 0);
    const auto found = library.call<Handle, Handle, Handle>("ZRCopyArrayOfMatchingRecords", roster, search);
    for (const auto handle : {found, search, name, person})
        library.call<void, Handle>("ZRRelease", handle);
}

const Role usesRoster("use a roster as a plug-in", [](const Words&) {
    unsetenv("ZRLogToStandardError"); // which is how the log is asked for
    setlocale(LC_ALL, "C.UTF-8");
    signal(SIGPIPE, SIG_IGN);
    const std::string before = hostState();
    useRoster(Library());
    const std::string after = hostState();
    return news(before, after) + news(after, before) + threadsThatTakeSignals();
});

void nothing(const files::path&) { }
void damaged(const files::path& store)
{
    files::create_directories(store.parent_path());
    std::ofstream(store) << "This is no database, however often it is opened.";
}
void aDirectory(const files::path& store) { files::create_directories(store); }
void belowAFile(const files::path& store)
{
    files::create_directories(store.parent_path().parent_path());
    std::ofstream(store.parent_path()) << "a file where the roster's directory would be";
}

TEST(HostTest, StaysAsItIs)
{
    const struct {
        const char* name;
        void (*prepare)(const files::path& store);
    } kRosters[] = {{"no roster", nothing}, {"a damaged roster", damaged},
        {"a directory in its place", aDirectory}, {"no place for it", belowAFile}};
    for (const auto& [name, prepare] : kRosters) {
        const files::path data = files::path(std::getenv("XDG_DATA_HOME")) / name;
        prepare(data / "Roster/Roster-v22.zrosdb");
        const auto outcome =
            test::play("use a roster as a plug-in", {}, {.environment = {{"XDG_DATA_HOME", data}}});
        EXPECT_EQ(outcome.status, 0) << name;
        EXPECT_EQ(outcome.answer, "") << name;
        EXPECT_EQ(outcome.log, "") << name << ": the library prints nothing";
    }
}

} // namespace
