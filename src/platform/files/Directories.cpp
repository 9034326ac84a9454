// Where the XDG base directory rules put things.
#include "platform/files/Directories.h"

#include "platform/files/Files.h"
#include "platform/run/Mutex.h"
#include "platform/run/NeverDestroyed.h"

#include <cerrno>
#include <cstdlib>
#include <utility>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

std::string homeOfPasswordFile()
{
    passwd entry{};
    passwd* found = nullptr;
    std::string buffer(16384, '\0');
    getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found);
    return found && found->pw_dir && *found->pw_dir ? found->pw_dir : "/";
}

bool isOwnAndPrivate(const std::string& path)
{
    struct stat info { };
    return lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == geteuid()
        && (info.st_mode & 077) == 0;
}

class XDGDirectories final : public Directories {
public:
    XDGDirectories(Environment environment, std::string sharedTemporary)
        : _environment(std::move(environment)), _sharedTemporary(std::move(sharedTemporary))
    {
    }

    std::string home() const override
    {
        const auto named = variable("HOME");
        return named.empty() ? standardizedPath(homeOfPasswordFile()) : named;
    }
    std::string dataHome() const override { return variableOr("XDG_DATA_HOME", "/.local/share"); }
    std::string configHome() const override { return variableOr("XDG_CONFIG_HOME", "/.config"); }
    std::string cacheHome() const override { return variableOr("XDG_CACHE_HOME", "/.cache"); }

    std::vector<std::string> dataDirectories() const override
    {
        const char* const set = _environment("XDG_DATA_DIRS");
        std::string_view rest = set && *set ? set : "/usr/local/share:/usr/share";
        std::vector<std::string> directories;
        while (!rest.empty()) {
            const auto part = rest.substr(0, rest.find(':'));
            rest.remove_prefix(std::min(rest.size(), part.size() + 1));
            if (part.starts_with('/'))
                directories.push_back(standardizedPath(part));
        }
        return directories;
    }

    std::string temporary() const override
    {
        const auto named = variable("TMPDIR");
        return named.empty() ? _sharedTemporary : named;
    }

    Result<std::string> runtime() const override
    {
        const auto named = variable("XDG_RUNTIME_DIR");
        if (!named.empty() && isOwnAndPrivate(named))
            return named;
        const auto own = _sharedTemporary + "/roster-" + std::to_string(geteuid());
        if (mkdir(own.c_str(), 0700) != 0 && errno != EEXIST)
            return fileError(own, "cannot make the run-time directory", errno);
        if (!isOwnAndPrivate(own))
            return fileError(own, "is not this user's own private directory", EPERM);
        return own;
    }

private:
    /// The absolute path in a variable, or none: the rules have relative ones ignored.
    std::string variable(const char* name) const
    {
        const char* const value = _environment(name);
        return value && *value == '/' ? standardizedPath(value) : std::string();
    }

    std::string variableOr(const char* name, const char* belowHome) const
    {
        const auto named = variable(name);
        return named.empty() ? home() + belowHome : named;
    }

    const Environment _environment;
    const std::string _sharedTemporary;
};

struct Installed {
    Mutex mutex{LockRank::leaf};
    std::shared_ptr<const Directories> directories ZR_GUARDED_BY(mutex) = makeXDGDirectories(
        [](const char* name) { return std::getenv(name); });
};

Installed& installed()
{
    static const NeverDestroyed<Installed> only;
    return *only;
}

} // namespace

std::vector<std::string> Directories::libraries() const
{
    auto all = dataDirectories();
    all.insert(all.begin(), dataHome());
    return all;
}

std::shared_ptr<const Directories> Directories::current()
{
    Lock lock(installed().mutex);
    return installed().directories;
}

std::shared_ptr<const Directories> Directories::install(std::shared_ptr<const Directories> directories)
{
    if (!directories)
        directories = makeXDGDirectories([](const char* name) { return std::getenv(name); });
    Lock lock(installed().mutex);
    return std::exchange(installed().directories, std::move(directories));
}

std::shared_ptr<const Directories> makeXDGDirectories(Environment environment, std::string sharedTemporary)
{
    return std::make_shared<XDGDirectories>(std::move(environment), std::move(sharedTemporary));
}

} // namespace platform
