// What a roster tells other processes and its own, as one line; and what others tell it.
#pragma once

#include "platform/notify/DistributedNotificationCenter.h"
#include "platform/notify/NotificationCenter.h"
#include "store/RosterWorld.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace test {

/// In place of the notices between processes: keeps what is posted, and posts what the test makes up.
///
/// Ownership: shared, as the library wants it.
/// Threads:   one.
/// Errors:    none.
class RecordingCenter final : public platform::DistributedNotificationCenter {
public:
    void post(const platform::DistributedNotification& notice) override { posted.push_back(notice); }
    platform::Subscription subscribe(
        std::optional<std::string> name, std::optional<std::string> object, Callback callback) override;
    /// As if another process had posted it, on this thread.
    void deliver(const platform::DistributedNotification& notice) const { _observers.call(notice); }

    std::vector<platform::DistributedNotification> posted;

private:
    platform::Observers<platform::DistributedNotification> _observers;
};

/// A process with the shared roster and one saved card, Ana, that hears everything. Its first thread is the
/// main thread.
class NoticeWorld {
public:
    NoticeWorld();
    ~NoticeWorld();
    NoticeWorld(const NoticeWorld&) = delete;
    NoticeWorld& operator=(const NoticeWorld&) = delete;

    /// A new card in `where` (null: the shared roster), with its first name as the word for its id.
    Ref<ZRPerson> add(const std::string& firstName, const Ref<ZRRoster>& where = nullptr);
    /// The word for an id in what is told.
    void name(const std::string& id, const std::string& word) { _words[id] = word; }

    /// What other processes were told since the last time: "public +Ana ~Bo -Cy; private …", with + for
    /// inserted, ~ for updated and - for deleted, "log" for a row of the log of deletions; "nothing".
    std::string told();
    /// What this process was told: the same, and "external public", "will reset", "did reset".
    std::string heard();
    /// "saved" or "not saved", and what was told.
    std::string outcomeOf(bool saved) { return std::string(saved ? "saved: " : "not saved: ") + told(); }

    std::shared_ptr<RecordingCenter> center = std::make_shared<RecordingCenter>();
    Ref<ZRRoster> roster;
    Ref<ZRPerson> ana;

private:
    std::string listsOf(const Value& info) const;
    std::string wordFor(const std::string& id) const;
    std::string wordsFor(char mark, const Value& ids) const;

    std::map<std::string, std::string> _words;
    std::vector<std::string> _heard;
    std::vector<platform::Subscription> _subscriptions;
};

/// One behaviour, and what a process that acts it out answers.
struct Act {
    const char* name;
    std::function<std::string(NoticeWorld&)> act;
    std::string expected;
};

/// Acts that this program can play. Make them at namespace scope.
class Acts {
public:
    Acts(std::string role, std::vector<Act> acts);
    /// Expects of each what it answers in a new process and home.
    void play() const;

private:
    const std::string _name;
    const std::vector<Act> _acts;
    const Role _role;
};

} // namespace test
