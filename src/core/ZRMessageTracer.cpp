// Writes one event as one line.
#include "core/ZRMessageTracer.h"

#include "platform/run/Log.h"

#include <fmt/format.h>

namespace {

void appendText(std::string& line, std::string_view key, std::string_view text)
{
    if (text.empty())
        return;
    line += fmt::format(" {}=\"", key);
    for (const char c : text) {
        if (c == '"' || c == '\\')
            line += {'\\', c};
        else if (c == '\n')
            line += "\\n";
        else if (static_cast<unsigned char>(c) < 0x20)
            line += fmt::format("\\u{:04x}", static_cast<unsigned>(c));
        else
            line += c;
    }
    line += '"';
}

} // namespace

std::string ZRMessageTracer::domain() const
{
    return baseDomain + (baseDomain.empty() || subdomain.empty() ? "" : ".") + subdomain;
}

std::string ZRMessageTracer::line() const
{
    std::string line = fmt::format("[MessageTracer] domain=\"{}\" success={}", domain(), success);
    appendText(line, "signature", signature);
    appendText(line, "uid", uid);
    if (itemCount != 0)
        line += fmt::format(" count={}", itemCount);
    appendText(line, "message", message);
    return line;
}

void ZRMessageTracer::log() const { platform::log(line()); }
