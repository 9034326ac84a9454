// How a program is started, ended and read.
#include "support/Process.h"

#include "support/Forked.h"

#include <cerrno>
#include <csignal>
#include <stdexcept>

#include <sys/wait.h>

namespace test {

Process::Process(const Start& given)
{
    put(_folder / "in", given.input);
    const std::string out = given.outputPath.value_or(_folder / "out");
    _pid =
        start({given.words.front(), given.words, given.environment, {_folder / "in", out, _folder / "err"}});
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
