// How the tool prints: whole documents to standard output, one line a complaint to standard error.
#include "Command.h"

#include <cerrno>
#include <cstring>

#include <unistd.h>

namespace {

/// Answers 0, or the system's error number.
int writeAll(int descriptor, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = ::write(descriptor, text.data(), text.size());
        if (count < 0 && errno != EINTR)
            return errno;
        text.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    return 0;
}

/// A reader that has gone, as `head` does, is no failure to talk about.
void writeOut(std::string_view text)
{
    if (const int failure = writeAll(STDOUT_FILENO, text); failure != 0)
        throw Failure(exitStatus::refused,
            failure == EPIPE ? ""
                             : std::string("cannot write to standard output: ") + std::strerror(failure));
}

} // namespace

void printJson(const Json& json)
{
    writeOut(json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
}

void print(std::string_view text) { writeOut(printable(text)); }

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
