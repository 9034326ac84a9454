// `roster watch`: one JSON line for each change that any process saves, until it is stopped.
#include "CardJson.h"
#include "Command.h"

#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRMainQueue.h"
#include "core/ZRPerson.h"
#include "platform/notify/NotificationCenter.h"
#include "store/ZRChangeNotices.h"
#include "store/ZRSafeNotificationCenter.h"

#include <csignal>
#include <deque>
#include <map>
#include <utility>

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace {

using platform::Notification;
using platform::Value;

/// SIGINT and SIGTERM as something to poll. They are blocked in every thread that starts later, so this comes
/// before the roster.
class StopSignals {
public:
    StopSignals()
    {
        sigset_t stops;
        sigemptyset(&stops);
        sigaddset(&stops, SIGINT);
        sigaddset(&stops, SIGTERM);
        pthread_sigmask(SIG_BLOCK, &stops, nullptr);
        _descriptor = signalfd(-1, &stops, SFD_CLOEXEC);
    }
    ~StopSignals() { close(_descriptor); }
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    int descriptor() const { return _descriptor; }

private:
    int _descriptor = -1;
};

/// The names of people and groups by id: a deleted record cannot be asked any more.
class Names {
public:
    explicit Names(platform::Ref<ZRRoster> roster) : _roster(std::move(roster)) { learnAll(); }

    void learnAll()
    {
        _known.clear();
        for (const auto& list : {_roster->sortedPeople(ZRNameOrder::preferred, 0), _roster->groups()})
            for (const auto& record : list)
                learn(*record);
    }

    /// Reads them anew, as far as they are still there.
    void learn(const std::vector<std::string>& ids)
    {
        for (const auto& record : _roster->recordsForUniqueIds(ids))
            learn(*record);
    }

    Json name(const std::string& id) const
    {
        const auto at = _known.find(id);
        return at == _known.end() ? Json() : Json(at->second);
    }

    void forget(const std::string& id) { _known.erase(id); }

private:
    void learn(ZRRecord& record)
    {
        if (dynamic_cast<ZRPerson*>(&record) || dynamic_cast<ZRGroup*>(&record))
            _known.insert_or_assign(record.uniqueId(), displayName(record));
    }

    const platform::Ref<ZRRoster> _roster;
    std::map<std::string, std::string> _known;
};

struct ChangeKind {
    const char* name;
    std::string_view key;
};
constexpr ChangeKind kInserted{"inserted", zr::kZRInsertedRecords};
constexpr ChangeKind kUpdated{"updated", zr::kZRUpdatedRecords};
constexpr ChangeKind kDeleted{"deleted", zr::kZRDeletedRecords};

Json processJson(const Value& notice)
{
    const Value& id = notice[zr::kZRSenderProcessID];
    return id.isNumber()
        ? Json{{"id", id.asInteger()}, {"name", std::string(notice[zr::kZRSenderProcessName].asText())}}
        : Json();
}

std::string line(const Json& process, const char* kind, const Json& ids, const Json& names)
{
    const Json json{{"process", process}, {"kind", kind}, {"ids", ids}, {"names", names}};
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

/// Turns what the library tells on the main queue into lines, those of one change together.
class Changes {
public:
    explicit Changes(const platform::Ref<ZRRoster>& roster) : _names(roster)
    {
        const auto center = ZRSafeNotificationCenter::defaultCenter();
        _entries.push_back(center->addSafeObserver(
            nullptr, [this](const Notification& notice) { take(notice.userInfo); },
            kZRDatabaseChangedExternallyNotification, roster.get()));
        _entries.push_back(center->addSafeObserver(
            nullptr, [this](const Notification&) { takeReload(Json()); }, kZRRosterDidResetPriv,
            roster.get()));
    }
    ~Changes() { ZRSafeNotificationCenter::defaultCenter()->removeObserversInCollection(_entries); }
    Changes(const Changes&) = delete;
    Changes& operator=(const Changes&) = delete;

    /// The lines of the oldest change that was not taken yet; empty when there is none.
    std::string next()
    {
        if (_waiting.empty())
            return {};
        std::string lines = std::move(_waiting.front());
        _waiting.pop_front();
        return lines;
    }

private:
    void take(const Value& notice)
    {
        const Json process = processJson(notice);
        if (notice[kZRReloadRecords].asBoolean())
            return takeReload(process);
        std::string lines;
        for (const auto& kind : {kInserted, kUpdated, kDeleted})
            lines += linesOf(process, kind, notice[kind.key]);
        if (!lines.empty())
            _waiting.push_back(std::move(lines));
    }

    void takeReload(const Json& process)
    {
        _names.learnAll();
        _waiting.push_back(line(process, "reload", Json::array(), Json::array()));
    }

    std::string linesOf(const Json& process, const ChangeKind& kind, const Value& list)
    {
        std::vector<std::string> ids;
        for (const Value& id : list.asArray())
            ids.emplace_back(id.asText());
        if (ids.empty())
            return {};
        const bool isDeletion = kind.key == kDeleted.key;
        if (!isDeletion)
            _names.learn(ids);
        Json names = Json::array();
        for (const auto& id : ids) {
            names.push_back(_names.name(id));
            if (isDeletion)
                _names.forget(id);
        }
        return line(process, kind.name, ids, names);
    }

    Names _names;
    std::deque<std::string> _waiting;
    std::vector<platform::Ref<ZRSafeNotificationEntry>> _entries;
};

/// Until a signal, the end of the reader or, when asked for, the first change. While lines wait for a slow
/// reader, the queue is left alone: what others say waits in its file, not in memory.
void serve(Changes& changes, int queue, const StopSignals& signals, bool once)
{
    std::string unwritten;
    for (;;) {
        const bool isWriting = !unwritten.empty();
        pollfd watched[] = {{isWriting ? -1 : queue, POLLIN, 0}, {signals.descriptor(), POLLIN, 0},
            {STDOUT_FILENO, static_cast<short>(isWriting ? POLLOUT : 0), 0}};
        if (poll(watched, std::size(watched), -1) < 0)
            continue;
        const auto& [work, stop, output] = watched;
        if (stop.revents != 0 || (output.revents & (POLLERR | POLLNVAL)) != 0)
            return;
        if (output.revents != 0 && !writeSome(unwritten))
            return;
        if (isWriting && unwritten.empty() && once)
            return;
        if (work.revents != 0)
            ZRMainQueueDrain();
        if (unwritten.empty())
            unwritten = changes.next();
    }
}

} // namespace

int runWatch(const Options& options)
{
    const StopSignals signals;
    // Ours before the roster listens: nothing is told before we do.
    const int queue = ZRMainQueueGetFileDescriptor();
    const auto roster = openRoster(options);
    Changes changes(roster);
    complain("watching " + roster->databaseDirectory());
    serve(changes, queue, signals, options.once);
    return exitStatus::done;
}
