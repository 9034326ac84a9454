// What a roster tells other processes and its own, as one line; and what others tell it.
#include "store/NoticeWorld.h"

#include "core/ZRInfo.h"
#include "platform/run/MainQueue.h"
#include "store/ZRChangeNotices.h"

#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <stdexcept>
#include <utility>

namespace test {

namespace {

/// Longer lists are told by their length.
constexpr std::size_t kMostNamed = 5;

constexpr std::pair<const char*, const char*> kNotices[] = {
    {kZRDatabaseChangedNotification, "public"},
    {kZRDatabaseChangedNotificationPriv, "private"},
    {kZRDatabaseChangedExternallyNotification, "external public"},
    {kZRDatabaseChangedExternallyNotificationPriv, "external private"},
    {kZRRosterWillResetPriv, "will reset"},
    {kZRRosterDidResetPriv, "did reset"},
};

std::string wordForNotice(std::string_view notice)
{
    const auto* const at =
        std::ranges::find_if(kNotices, [&](const auto& known) { return notice == known.first; });
    return at == std::end(kNotices) ? std::string(notice) : at->second;
}

std::string joined(const std::vector<std::string>& notices)
{
    return notices.empty() ? "nothing" : fmt::format("{}", fmt::join(notices, "; "));
}

} // namespace

platform::Subscription RecordingCenter::subscribe(
    std::optional<std::string> name, std::optional<std::string> object, Callback callback)
{
    return _observers.subscribe([=](const platform::DistributedNotification& notice) {
        if ((!name || name == notice.name) && (!object || object == notice.object))
            callback(notice);
    });
}

NoticeWorld::NoticeWorld()
{
    static_cast<void>(platform::MainQueue::shared().fileDescriptor());
    platform::DistributedNotificationCenter::install(center);
    roster = openShared();
    ana = add("Ana");
    if (!roster->save())
        throw std::runtime_error(roster->lastSaveError().text);
    name(roster->nts_Info()->uniqueId(), "info");
    for (const auto& [notice, word] : kNotices)
        _subscriptions.push_back(platform::NotificationCenter::shared().subscribe(
            notice, nullptr, [this](const platform::Notification& posted) {
                _heard.push_back(wordForNotice(posted.name) + listsOf(posted.userInfo));
            }));
    static_cast<void>(told());
    static_cast<void>(heard());
}

NoticeWorld::~NoticeWorld() { platform::DistributedNotificationCenter::install(nullptr); }

Ref<ZRPerson> NoticeWorld::add(const std::string& firstName, const Ref<ZRRoster>& where)
{
    auto made = person(where ? where : roster, {{kZRFirstNameProperty, Value(firstName)}});
    name(made->uniqueId(), firstName);
    return made;
}

std::string NoticeWorld::told()
{
    std::vector<std::string> notices;
    for (const auto& notice : std::exchange(center->posted, {}))
        notices.push_back(wordForNotice(notice.name) + listsOf(notice.userInfo));
    return joined(notices);
}

// What a block adds waits for the next turn.
std::string NoticeWorld::heard()
{
    constexpr int enoughTurns = 5;
    for (int turn = 0; turn < enoughTurns; ++turn)
        platform::MainQueue::shared().drain();
    return joined(std::exchange(_heard, {}));
}

std::string NoticeWorld::listsOf(const Value& info) const
{
    return wordsFor('+', info[zr::kZRInsertedRecords]) + wordsFor('~', info[zr::kZRUpdatedRecords])
        + wordsFor('-', info[zr::kZRDeletedRecords]) + (info[kZRReloadRecords].asBoolean() ? " reload" : "");
}

std::string NoticeWorld::wordFor(const std::string& id) const
{
    const auto known = _words.find(id);
    return known != _words.end() ? known->second : id.ends_with(":ZRDeletedRecordLog") ? "log" : id;
}

std::string NoticeWorld::wordsFor(char mark, const Value& ids) const
{
    const auto& list = ids.asArray();
    if (list.size() > kMostNamed)
        return fmt::format(" {}{} records", mark, list.size());
    std::set<std::string> words;
    for (const Value& id : list)
        words.insert(fmt::format(" {}{}", mark, wordFor(std::string(id.asText()))));
    return fmt::format("{}", fmt::join(words, ""));
}

Acts::Acts(std::string role, std::vector<Act> acts)
    : _name(std::move(role)), _acts(std::move(acts)), _role(_name, [this](const Words& words) {
        NoticeWorld world;
        return _acts.at(std::stoul(words.at(0))).act(world);
    })
{
}

void Acts::play() const
{
    for (std::size_t i = 0; i < _acts.size(); ++i) {
        const Home home;
        const auto outcome = home.play(_name, {std::to_string(i)});
        EXPECT_EQ(outcome.answer, _acts[i].expected) << _acts[i].name << "\n" << outcome.log;
    }
}

} // namespace test
