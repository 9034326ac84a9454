// How commands are written into the spool, claimed by their server, and checked before they are trusted.
#include "platform/processes/Spool.h"

#include "platform/files/Directories.h"
#include "platform/files/Files.h"
#include "platform/files/PlainFileName.h"
#include "platform/run/Log.h"
#include "platform/value/PropertyList.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr std::string_view kKept = ".action";
constexpr std::string_view kTaken = ".taken";
constexpr PropertyListLimits kLimits{.depth = 8, .nodes = 4096, .bytes = kLargestSpooledAction};

Value valueOf(const SpooledAction& action)
{
    std::vector<Value> arguments(action.arguments.begin(), action.arguments.end());
    return Value::dictionary(
        {{"domain", action.domain}, {"action", action.action}, {"command", action.command},
            {"arguments", Value::array(std::move(arguments))}, {"fireDate", action.fireDate.seconds}});
}

std::optional<SpooledAction> actionOf(const Value& value)
{
    const auto& date = value["fireDate"];
    SpooledAction action{std::string(value["domain"].asText()), std::string(value["action"].asText()),
        std::string(value["command"].asText()), {}, {date.asReal()}};
    for (const auto& argument : value["arguments"].asArray())
        action.arguments.emplace_back(argument.asText());
    if (!action.command.starts_with('/') || !date.isNumber() || !std::isfinite(action.fireDate.seconds))
        return {};
    return action;
}

/// Whoever may write the file may have this user run anything.
bool isTrusted(const struct stat& info)
{
    return S_ISREG(info.st_mode) && info.st_uid == geteuid() && (info.st_mode & 022) == 0
        && info.st_size <= static_cast<off_t>(kLargestSpooledAction);
}

/// The code EBADMSG tells what is there and must not be run from what could not be looked at just now.
Result<SpooledAction> readAction(const std::string& path)
{
    struct stat info { };
    if (lstat(path.c_str(), &info) != 0)
        return fileError(path, "cannot be looked at", errno);
    const auto refused = fileError(path, "is no scheduled command that may be run", EBADMSG);
    if (!isTrusted(info))
        return refused;
    const auto bytes = readFile(path);
    if (!bytes)
        return bytes.error();
    const auto value = decodePropertyList(*bytes, kLimits);
    auto action = value ? actionOf(*value) : std::nullopt;
    return action ? Result(std::move(*action)) : refused;
}

/// Removes what nobody may run, and leaves what could not be read.
void refuse(const std::string& path, const Error& why)
{
    if (why.code == ENOENT)
        return;
    log(why.text);
    if (why.code == EBADMSG && unlink(path.c_str()) != 0)
        log(fileError(path, "cannot be removed", errno).text);
}

std::string withEnding(const std::string& path, std::string_view from, std::string_view to)
{
    return path.substr(0, path.size() - from.size()).append(to);
}

/// Unless a newer one stands there, which counts instead.
void putBack(const std::string& taken)
{
    const auto kept = withEnding(taken, kTaken, kKept);
    if (renameat2(AT_FDCWD, taken.c_str(), AT_FDCWD, kept.c_str(), RENAME_NOREPLACE) != 0)
        unlink(taken.c_str());
}

} // namespace

Result<void> Spool::put(const SpooledAction& action) const
{
    if (!action.command.starts_with('/'))
        return fileError(action.command, "is no absolute path of a program", EINVAL);
    const auto bytes = encodePropertyList(valueOf(action), PropertyListFormat::xml, kLimits);
    if (!bytes)
        return bytes.error();
    if (auto made = makePrivateDirectory(_directory); !made)
        return made;
    return writeFileAtomically(pathFor(action.domain, action.action), *bytes);
}

std::optional<SpooledAction> Spool::find(const std::string& domain, const std::string& action) const
{
    auto found = readAction(pathFor(domain, action));
    return found ? std::optional(std::move(*found)) : std::nullopt;
}

Result<void> Spool::remove(const std::string& domain, const std::string& action) const
{
    return removeFile(pathFor(domain, action));
}

std::vector<Spool::Taken> Spool::takeDue(Date now) const
{
    std::vector<Taken> due;
    for (const auto& path : filesEndingIn(kKept)) {
        const auto seen = readAction(path);
        if (!seen)
            refuse(path, seen.error());
        else if (seen->fireDate <= now)
            if (auto taken = claim(path, now))
                due.push_back(std::move(*taken));
    }
    return due;
}

/// The file may be another by now: it is looked at again once nobody else can touch it.
std::optional<Spool::Taken> Spool::claim(const std::string& path, Date now) const
{
    const auto taken = withEnding(path, kKept, kTaken);
    if (rename(path.c_str(), taken.c_str()) != 0)
        return {};
    auto action = readAction(taken);
    if (!action) {
        refuse(taken, action.error());
        return {};
    }
    if (action->fireDate > now) {
        putBack(taken);
        return {};
    }
    return Taken{std::move(*action), taken};
}

void Spool::finish(const Taken& taken) const { unlink(taken.path.c_str()); }

void Spool::recover() const
{
    for (const auto& taken : filesEndingIn(kTaken))
        putBack(taken);
}

std::optional<Date> Spool::nextDate() const
{
    std::optional<Date> next;
    for (const auto& path : filesEndingIn(kKept))
        if (const auto action = readAction(path))
            next = next ? std::min(*next, action->fireDate) : action->fireDate;
    return next;
}

std::string Spool::pathFor(const std::string& domain, const std::string& action) const
{
    return _directory + "/" + plainFileName(domain + "/" + action).append(kKept);
}

std::vector<std::string> Spool::filesEndingIn(std::string_view ending) const
{
    std::vector<std::string> paths;
    std::error_code failure;
    for (std::filesystem::directory_iterator at(_directory, failure), end; !failure && at != end;
         at.increment(failure))
        if (const auto path = at->path().string(); path.ends_with(ending))
            paths.push_back(path);
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::string userSpoolDirectory() { return Directories::current()->dataHome() + "/roster-schedule"; }

} // namespace platform
