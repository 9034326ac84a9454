// How the preference files stay true while several processes read and write them.
#include "platform/files/Preferences.h"

#include "platform/files/Directories.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/Files.h"
#include "platform/run/Log.h"
#include "platform/run/NeverDestroyed.h"
#include "platform/value/PropertyList.h"

#include <algorithm>
#include <cerrno>
#include <map>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace platform {

namespace {

/// What one `stat` says about a file; the same answer means the same content.
struct Identity {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    long long seconds = 0;
    long nanoseconds = 0;

    static Identity of(const struct stat& info)
    {
        return {info.st_dev, info.st_ino, info.st_size, info.st_mtim.tv_sec, info.st_mtim.tv_nsec};
    }
    friend bool operator==(const Identity&, const Identity&) = default;
};

/// A domain as it was read.
struct Domain {
    Identity identity;
    /// Kept open, so that no later file of the domain can get the same inode.
    FileDescriptor file;
    Value entries;
    bool readable = true;
};

Value emptyDictionary() { return Value::dictionary({}); }

std::string fileOf(std::string_view domain)
{
    std::string path = Directories::current()->configHome();
    path.reserve(path.size() + domain.size() + 8);
    path += '/';
    for (const char c : domain)
        path += c == '/' ? '-' : c;
    return path += ".plist";
}

Result<Value> readEntries(const std::string& path)
{
    const auto bytes = readFile(path);
    if (!bytes)
        return bytes.error();
    auto list = decodePropertyList(*bytes);
    if (!list)
        return Error{list.error().domain, list.error().code, path + ": " + list.error().text};
    if (!list->isDictionary())
        return Error{kPropertyListErrorDomain, static_cast<long>(PropertyListFault::malformed),
            path + ": holds no dictionary"};
    return list;
}

/// Reads a domain from its file; a missing file is an empty domain.
Domain readDomain(const std::string& path)
{
    Domain domain;
    domain.entries = emptyDictionary();
    domain.file = FileDescriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat info { };
    if (!domain.file && errno == ENOENT)
        return domain;
    if (domain.file && fstat(domain.file.get(), &info) == 0)
        domain.identity = Identity::of(info);
    auto entries = readEntries(path);
    if (entries)
        domain.entries = *entries;
    else
        log("Preferences: " + entries.error().text);
    domain.readable = bool(entries);
    return domain;
}

/// Keeps other writers of a domain out, in this process and all others, while it lives.
class WriteLock {
public:
    explicit WriteLock(const std::string& path)
        : _file(open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600))
    {
        while (_file && flock(_file.get(), LOCK_EX) != 0)
            if (errno != EINTR) {
                _file = FileDescriptor();
                break;
            }
    }
    explicit operator bool() const { return bool(_file); }

private:
    FileDescriptor _file;
};

Value changed(const Value& entries, std::string_view key, const Value& value)
{
    auto all = entries.asDictionary()->entries();
    std::erase_if(all, [&](const auto& entry) { return entry.first == key; });
    if (!value.isNothing())
        all.emplace_back(key, value);
    return Value::dictionary(std::move(all));
}

} // namespace

struct Preferences::State {
    Mutex mutex;
    std::map<std::string, Domain> domains ZR_GUARDED_BY(mutex);
    std::map<std::string, Value, std::less<>> arguments ZR_GUARDED_BY(mutex);
    Observers<std::string, std::string> observers;

    /// The domain as its file is now.
    const Domain& current(const std::string& path) ZR_REQUIRES(mutex)
    {
        struct stat info { };
        const auto identity = stat(path.c_str(), &info) == 0 ? Identity::of(info) : Identity();
        const auto known = domains.find(path);
        if (known != domains.end() && known->second.identity == identity)
            return known->second;
        return domains.insert_or_assign(path, readDomain(path)).first->second;
    }

    Value entries(std::string_view domain)
    {
        const auto path = fileOf(domain);
        Lock lock(mutex);
        return current(path).entries;
    }

    /// Answers whether anything was changed.
    /// Replaces the entries of a file by what `edit` makes of them; answers whether anything changed.
    template <class Edit>
    Result<bool> write(const std::string& path, Edit&& edit)
    {
        if (auto made = makePrivateDirectory(Directories::current()->configHome()); !made)
            return made.error();
        const WriteLock writing(path);
        if (!writing)
            return fileError(path + ".lock", "cannot lock", errno);
        Value before;
        {
            Lock lock(mutex);
            const auto& domain = current(path);
            if (!domain.readable)
                return fileError(path, "is left alone, since it cannot be read", EINVAL);
            before = domain.entries;
        }
        const Value after = edit(before);
        if (after.isAbsent())
            return false;
        const auto bytes = encodePropertyList(after, PropertyListFormat::binary);
        if (!bytes)
            return bytes.error();
        if (auto written = writeFileAtomically(path, *bytes); !written)
            return written.error();
        return true;
    }
};

Preferences::Preferences() : _state(std::make_shared<State>()) { }

Preferences& Preferences::shared()
{
    static const NeverDestroyed<Preferences> preferences;
    return *preferences;
}

Value Preferences::get(std::string_view domain, std::string_view key)
{
    {
        Lock lock(_state->mutex);
        if (const auto argument = _state->arguments.find(key); argument != _state->arguments.end())
            return argument->second;
    }
    return _state->entries(domain)[key];
}

Result<void> Preferences::set(std::string_view domain, std::string_view key, const Value& value)
{
    const auto written = _state->write(fileOf(domain), [&](const Value& before) {
        const Value after = changed(before, key, value);
        const bool isSame = after == before && before[key].kind() == after[key].kind();
        return isSame ? Value() : after;
    });
    if (!written)
        return written.error();
    if (*written)
        _state->observers.call(std::string(domain), std::string(key));
    return {};
}

Result<void> Preferences::addMissing(std::string_view domain, const Value& dictionary)
{
    std::vector<std::string> added;
    const auto written = _state->write(fileOf(domain), [&](const Value& before) {
        Value after = before;
        for (const auto& [key, value] : dictionary.asDictionary()->entries())
            if (before[key].isAbsent()) {
                after = changed(after, key, value);
                added.push_back(key);
            }
        return added.empty() ? Value() : after;
    });
    if (!written)
        return written.error();
    for (const auto& key : added)
        _state->observers.call(std::string(domain), key);
    return {};
}

std::vector<std::string> Preferences::keys(std::string_view domain)
{
    std::vector<std::string> keys;
    const auto entries = _state->entries(domain);
    for (const auto& entry : entries.asDictionary()->entries())
        keys.push_back(entry.first);
    return keys;
}

Value Preferences::dictionary(std::string_view domain) { return _state->entries(domain); }

bool Preferences::synchronize(std::string_view domain)
{
    const auto path = fileOf(domain);
    Lock lock(_state->mutex);
    return _state->current(path).readable;
}

void Preferences::setArgument(std::string_view key, const Value& value)
{
    Lock lock(_state->mutex);
    if (value.isAbsent())
        _state->arguments.erase(std::string(key));
    else
        _state->arguments.insert_or_assign(std::string(key), value);
}

Subscription Preferences::observe(Observers<std::string, std::string>::Callback callback)
{
    return _state->observers.subscribe(std::move(callback));
}

bool preferenceIsTrue(const Value& value)
{
    if (!value.isString())
        return value.asBoolean();
    auto text = value.asText();
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    const auto number = text.find_first_not_of("+-0");
    if (number != std::string_view::npos && text[number] >= '1' && text[number] <= '9')
        return true;
    return !text.empty() && std::string_view("YyTt").find(text.front()) != std::string_view::npos;
}

} // namespace platform
