// How the tool prints: whole documents to standard output, one line a complaint to standard error.
#include "Command.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

#include <unistd.h>

namespace {

[[noreturn]] void failToWrite(int code)
{
    throw Failure(
        exitStatus::refused, std::string("cannot write to standard output: ") + std::strerror(code));
}

} // namespace

int writeAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            return errno;
        bytes.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    return 0;
}

// A reader that has gone, as `head` does, is no failure to talk about.
void printBytes(std::string_view bytes)
{
    const int code = writeAll(STDOUT_FILENO, bytes);
    if (code == EPIPE)
        throw Failure(exitStatus::refused, "");
    if (code != 0)
        failToWrite(code);
}

std::string jsonText(const Json& json) { return json.dump(2, ' ', false, Json::error_handler_t::replace); }

void printJson(const Json& json) { printBytes(jsonText(json) + "\n"); }

void print(std::string_view text) { printBytes(printable(text)); }

bool writeSome(std::string& text)
{
    // A pipe that is ready takes so much without blocking.
    const ssize_t count = ::write(STDOUT_FILENO, text.data(), std::min<std::size_t>(text.size(), PIPE_BUF));
    if (count < 0 && errno != EPIPE && errno != EINTR && errno != EAGAIN)
        failToWrite(errno);
    const bool isThere = count >= 0 || errno != EPIPE;
    text.erase(0, count < 0 ? 0 : static_cast<std::size_t>(count));
    return isThere;
}

void complain(std::string_view text)
{
    std::string line = "roster: " + printable(text);
    for (char& c : line)
        c = c == '\n' ? ' ' : c;
    static_cast<void>(writeAll(STDERR_FILENO, line + "\n"));
}

std::string printable(std::string_view text)
{
    std::string plain;
    plain.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        // The second control set is U+0080 to U+009F: 0xC2 and a byte of that range.
        const bool isSecondSet =
            c == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
        if (isSecondSet)
            ++i;
        if (isSecondSet || c == 0x7F || (c < 0x20 && c != '\n' && c != '\t'))
            plain += "\uFFFD";
        else
            plain += text[i];
    }
    return plain;
}
