// How another program is started without forking the host's threads and locks, and how its end is noticed.
#include "platform/processes/Launch.h"

#include "platform/files/FileDescriptor.h"
#include "platform/files/Files.h"
#include "platform/run/Log.h"
#include "platform/run/Thread.h"

#include <cerrno>
#include <csignal>
#include <memory>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace platform {

namespace {

using Words = std::vector<std::string>;

/// The words as the system wants them; they borrow from `words`.
std::vector<char*> pointers(const Words& words)
{
    std::vector<char*> result;
    for (const auto& word : words)
        result.push_back(const_cast<char*>(word.c_str()));
    result.push_back(nullptr);
    return result;
}

/// This process's environment with the entries of `added` in place of its own.
Words environmentWith(const std::map<std::string, std::string>& added)
{
    Words entries;
    for (char** entry = environ; entry && *entry; ++entry) {
        const std::string_view text = *entry;
        if (!added.contains(std::string(text.substr(0, text.find('=')))))
            entries.emplace_back(text);
    }
    for (const auto& [name, value] : added)
        entries.push_back(std::string(name).append("=").append(value));
    return entries;
}

/// What is done in the new process before it becomes the program.
class Preparation {
public:
    Preparation()
    {
        posix_spawn_file_actions_init(&_files);
        posix_spawn_file_actions_addopen(&_files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&_files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&_files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addclosefrom_np(&_files, STDERR_FILENO + 1);
        posix_spawn_file_actions_addchdir_np(&_files, "/");
        posix_spawnattr_init(&_attributes);
        posix_spawnattr_setflags(
            &_attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&_attributes, &signals);
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&_attributes, &signals);
    }
    ~Preparation()
    {
        posix_spawnattr_destroy(&_attributes);
        posix_spawn_file_actions_destroy(&_files);
    }
    Preparation(const Preparation&) = delete;
    Preparation& operator=(const Preparation&) = delete;

    const posix_spawn_file_actions_t* files() const { return &_files; }
    const posix_spawnattr_t* attributes() const { return &_attributes; }

private:
    posix_spawn_file_actions_t _files{};
    posix_spawnattr_t _attributes{};
};

Result<pid_t> spawn(const LaunchRequest& request)
{
    if (!request.program.starts_with('/'))
        return fileError(request.program, "is no absolute path of a program", EINVAL);
    Words words = request.arguments;
    words.insert(words.begin(), request.program);
    const Words environment = environmentWith(request.environment);
    const Preparation preparation;
    pid_t process = 0;
    if (const int code = posix_spawn(&process, request.program.c_str(), preparation.files(),
            preparation.attributes(), pointers(words).data(), pointers(environment).data()))
        return fileError(request.program, "cannot be started", code);
    return process;
}

/// Through the kernel: the C library's declaration lacks its C linkage in some versions.
int descriptorOf(pid_t process) { return static_cast<int>(syscall(SYS_pidfd_open, process, 0)); }

/// Waits for one process. By its descriptor where the system has such: its number may be another's by now if
/// the host waits for all children.
int waitFor(pid_t process, const FileDescriptor& descriptor)
{
    siginfo_t info{};
    const auto wait = [&] {
        return descriptor ? waitid(P_PIDFD, static_cast<id_t>(descriptor.get()), &info, WEXITED)
                          : waitid(P_PID, static_cast<id_t>(process), &info, WEXITED);
    };
    int result = 0;
    do
        result = wait();
    while (result != 0 && errno == EINTR);
    if (result != 0)
        return -1;
    return info.si_code == CLD_EXITED ? info.si_status : 128 + info.si_status;
}

} // namespace

Result<void> launch(const LaunchRequest& request, LaunchEnd onExit)
{
    const auto process = spawn(request);
    if (!process)
        return process.error();
    const auto descriptor = std::make_shared<FileDescriptor>(descriptorOf(*process));
    const bool waits =
        startThread("roster-reaper", [process = *process, descriptor, tell = std::move(onExit)] {
            const int status = waitFor(process, *descriptor);
            if (tell)
                tell(status);
        });
    if (!waits)
        log(request.program + " runs, but no thread can wait for its end");
    return {};
}

} // namespace platform
