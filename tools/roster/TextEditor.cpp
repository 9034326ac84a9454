// How an editor is started and waited for.
#include "TextEditor.h"

#include "Command.h"

#include <fmt/format.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(const std::string& text) { throw Failure(exitStatus::refused, text); }

/// The command that edits, as a shell reads it; empty without one.
std::string editorCommand()
{
    for (const char* const name : {"VISUAL", "EDITOR"})
        if (const char* const command = std::getenv(name); command && *command)
            return command;
    const bool isTerminal = ::isatty(STDIN_FILENO) == 1 && ::isatty(STDOUT_FILENO) == 1;
    return isTerminal ? (::access("/usr/bin/editor", X_OK) == 0 ? "editor" : "vi") : "";
}

/// While an editor runs, what is typed to end or stop something is meant for it.
class KeyboardSignals {
public:
    KeyboardSignals()
    {
        for (std::size_t i = 0; i < kSignals.size(); ++i)
            _former[i] = std::signal(kSignals[i], SIG_IGN);
    }
    ~KeyboardSignals()
    {
        for (std::size_t i = 0; i < kSignals.size(); ++i)
            std::signal(kSignals[i], _former[i]);
    }
    KeyboardSignals(const KeyboardSignals&) = delete;
    KeyboardSignals& operator=(const KeyboardSignals&) = delete;

    static constexpr std::array kSignals{SIGINT, SIGQUIT};

private:
    std::array<void (*)(int), kSignals.size()> _former{};
};

/// Starts it with every signal as a fresh process has it; answers the process, or -1 with errno.
pid_t start(const std::string& command, const std::string& path)
{
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGQUIT, SIGPIPE})
        ::sigaddset(&signals, signal);
    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    ::posix_spawnattr_setsigdefault(&attributes, &signals);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    std::string shell = "sh", option = "-c", script = command + " \"$1\"", name = command, file = path;
    const std::array words{
        shell.data(), option.data(), script.data(), name.data(), file.data(), static_cast<char*>(nullptr)};
    pid_t process = -1;
    errno = ::posix_spawn(&process, "/bin/sh", nullptr, &attributes, words.data(), environ);
    ::posix_spawnattr_destroy(&attributes);
    return errno == 0 ? process : -1;
}

/// Its exit status, or 128 plus the number of the signal that ended it.
int wait(pid_t process)
{
    int status = 0;
    while (::waitpid(process, &status, 0) < 0)
        if (errno != EINTR)
            fail(fmt::format("the editor was lost: {}", std::strerror(errno)));
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace

bool hasEditor() { return !editorCommand().empty(); }

EditedFile::EditedFile(std::string_view text) : _text(text)
{
    std::string folder = (fs::temp_directory_path() / "roster-XXXXXX").string();
    if (!::mkdtemp(folder.data()))
        fail(fmt::format("cannot make {}: {}", folder, std::strerror(errno)));
    _folder = folder;
    const std::string path = (_folder / "card.vcf").string();
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    const int code = file < 0 ? errno : writeAll(file, text);
    if (file >= 0)
        ::close(file);
    if (code != 0)
        fail(fmt::format("cannot write {}: {}", path, std::strerror(code)));
}

EditedFile::~EditedFile()
{
    std::error_code ignored;
    if (!_isKept)
        fs::remove_all(_folder, ignored);
}

std::string EditedFile::edit()
{
    const std::string command = editorCommand();
    int status = 0;
    {
        const KeyboardSignals signals;
        const pid_t process = start(command, (_folder / "card.vcf").string());
        if (process < 0)
            fail(fmt::format("cannot start '{}': {}", command, std::strerror(errno)));
        status = wait(process);
    }
    if (status != 0)
        fail(fmt::format("'{}' ended with status {}: nothing changed{}", command, status,
            read() == _text ? "" : "; your text is in " + keep()));
    return read();
}

std::string EditedFile::keep()
{
    _isKept = true;
    return (_folder / "card.vcf").string();
}

std::string EditedFile::read() const
{
    std::ifstream file(_folder / "card.vcf", std::ios::binary);
    if (!file)
        fail("the text is gone: nothing changed");
    return {std::istreambuf_iterator<char>(file), {}};
}
