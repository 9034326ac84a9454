// How the lists of default programs are found and read.
#include "platform/files/DefaultApplication.h"

#include "platform/files/Directories.h"
#include "platform/files/Files.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace platform {

namespace {

/// Takes the text up to `separator` off `rest`.
std::string_view takeUntil(std::string_view& rest, char separator)
{
    const auto part = rest.substr(0, rest.find(separator));
    rest.remove_prefix(std::min(rest.size(), part.size() + 1));
    return part;
}

std::string lowerCase(std::string_view name)
{
    std::string lower(name);
    std::ranges::transform(
        lower, lower.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return lower;
}

/// The most important list first.
std::vector<std::string> lists()
{
    std::vector<std::string> names;
    const char* const desktops = std::getenv("XDG_CURRENT_DESKTOP");
    for (std::string_view rest = desktops ? desktops : ""; !rest.empty();)
        if (const auto desktop = takeUntil(rest, ':'); desktop.find('/') == desktop.npos)
            names.push_back("/" + lowerCase(desktop) + "-mimeapps.list");
    names.emplace_back("/mimeapps.list");

    const auto directories = Directories::current();
    std::vector<std::string> folders{directories->configHome()};
    for (const auto& library : directories->libraries())
        folders.push_back(library + "/applications");
    std::vector<std::string> paths;
    for (const auto& folder : folders)
        for (const auto& name : names)
            paths.push_back(folder + name);
    return paths;
}

/// The first program that the section of defaults names for `type`.
std::string_view defaultIn(std::string_view list, std::string_view type)
{
    bool isDefaults = false;
    while (!list.empty()) {
        auto line = takeUntil(list, '\n');
        if (line.starts_with('['))
            isDefaults = line.starts_with("[Default Applications]");
        else if (isDefaults && takeUntil(line, '=') == type)
            for (auto programs = line.substr(0, line.find('\r')); !programs.empty();)
                if (const auto program = takeUntil(programs, ';'); !program.empty())
                    return program;
    }
    return {};
}

} // namespace

std::string defaultApplicationForURL(std::string_view url)
{
    const std::string type = "x-scheme-handler/" + lowerCase(url.substr(0, url.find(':')));
    for (const auto& path : lists())
        if (const auto list = readFile(path))
            if (const auto program = defaultIn(*list, type); !program.empty())
                return std::string(program);
    return {};
}

} // namespace platform
