// How a program is started, ended and read.
#include "support/Process.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace test {

namespace {

void redirect(int descriptor, const std::string& path, int flags)
{
    const int opened = ::open(path.c_str(), flags, 0600);
    if (opened < 0 || ::dup2(opened, descriptor) < 0)
        ::_exit(127);
    ::close(opened);
}

} // namespace

Process::Process(const Start& start)
{
    put(_folder / "in", start.input);
    const std::string out = start.outputPath.value_or(_folder / "out");

    _pid = ::fork();
    if (_pid < 0)
        throw std::runtime_error("cannot fork");
    if (_pid != 0)
        return;
    redirect(STDIN_FILENO, _folder / "in", O_RDONLY);
    redirect(STDOUT_FILENO, out, O_WRONLY | O_CREAT);
    redirect(STDERR_FILENO, _folder / "err", O_WRONLY | O_CREAT);
    for (const auto& [name, value] : start.environment)
        ::setenv(name.c_str(), value.c_str(), 1);
    std::vector<char*> words;
    for (const auto& word : start.words)
        words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    ::execv(words.front(), words.data());
    ::_exit(127);
}

Process::~Process()
{
    if (!_status) {
        kill(SIGKILL);
        wait();
    }
}

void Process::kill(int signal)
{
    if (!_status)
        ::kill(_pid, signal);
}

bool Process::hasEnded()
{
    int status = 0;
    if (!_status && ::waitpid(_pid, &status, WNOHANG) == _pid)
        _status = status;
    return _status.has_value();
}

Ended Process::wait()
{
    int status = 0;
    while (!_status)
        if (::waitpid(_pid, &status, 0) == _pid)
            _status = status;
        else if (errno != EINTR)
            throw std::runtime_error("cannot wait for a process");
    return {WIFEXITED(*_status) ? WEXITSTATUS(*_status) : 128 + WTERMSIG(*_status),
        bytesOf(_folder / "out", ""), bytesOf(_folder / "err", "")};
}

Ended run(const Process::Start& start) { return Process(start).wait(); }

} // namespace test
