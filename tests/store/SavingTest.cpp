// What a save writes and whom it tells: what changed, what it may not touch, and what fails.
#include "store/NoticeWorld.h"

#include "core/ZRGroup.h"
#include "core/ZRInfo.h"
#include "core/ZRLog.h"
#include "objectstore/StoreContext.h"
#include "platform/files/Preferences.h"
#include "platform/files/UserDefaults.h"
#include "platform/run/Clock.h"
#include "platform/run/Log.h"
#include "store/ZRChangeNotices.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"
#include "store/ZRServices.h"
#include "support/FaultyVfs.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>

#include <unistd.h>

namespace test {

namespace {

using platform::Date;
using testing::HasSubstr;

bool ntsSave(const Ref<ZRRoster>& roster)
{
    return locked(*roster, ZRAccess::write, [&]() ZR_NTS { return roster->nts_Save(); });
}

std::string dateOf(const Ref<ZRPerson>& card)
{
    return textOf(card->valueForProperty(kZRModificationDateProperty));
}

void edit(const Ref<ZRPerson>& card, std::string_view nickname)
{
    card->setValue(Value(nickname), kZRNicknameProperty);
}

std::int64_t countOf(const Ref<ZRRoster>& roster, std::string_view what)
{
    const auto counts = roster->statistics();
    return std::ranges::find(counts, what, [](const auto& count) {
        return std::string_view(count.first);
    })->second;
}

/// The logged lines with that in them, each up to `end`, without the path of this program.
std::string logged(const platform::LogCapture& log, std::string_view wanted)
{
    std::string text;
    for (const auto& line : log.lines())
        if (const auto at = line.find(wanted); at != std::string::npos)
            text += line.substr(at) + "; ";
    return text;
}

const Acts saving("act out a save",
    {
        {"nothing to do",
            [](NoticeWorld& world) {
                const bool saved = world.roster->save() && ntsSave(world.roster);
                return world.outcomeOf(saved);
            },
            "saved: nothing"},
        {"the info record only",
            [](NoticeWorld& world) {
                world.roster->setSyncAnchorsFromString("a-7");
                const std::string outcome = world.outcomeOf(world.roster->save());
                return outcome + " | " + world.heard();
            },
            "saved: public; private ~info | public; private ~info"},
        {"all kinds of change",
            [](NoticeWorld& world) {
                const auto bo = world.add("Bo"), cy = world.add("Cy");
                world.roster->save();
                static_cast<void>(world.told());
                edit(world.ana, "a");
                edit(world.add("Di"), "an edit of what is new");
                world.roster->removeRecord(bo);
                const std::string outcome = world.outcomeOf(world.roster->save());
                static_cast<void>(world.heard());
                edit(cy, "c");
                world.roster->save();
                return outcome + " | " + world.heard();
            },
            "saved: public +Di ~Ana -Bo; private +Di +log ~Ana -Bo | public ~Cy; private ~Cy"},
        // Another context may have made the object that this one changed: one save can find it on both lists.
        {"inserted and updated",
            [](NoticeWorld& world) {
                const auto bo = world.add("Bo");
                const objectstore::ObjectList both{Ref<objectstore::StoreObject>(bo->zrDatabaseImpl())};
                ZRRoster::UserInfo open, closed;
                ZRRoster::SaveEffects effects;
                locked(*world.roster, ZRAccess::write, [&]() ZR_NTS {
                    world.roster->updatePublicUserInfo(
                        open, closed, both, zr::kZRInsertedRecords, effects, Value(), {});
                    world.roster->updatePublicUserInfo(
                        open, closed, both, zr::kZRUpdatedRecords, effects, Value(), zr::kZRInsertedRecords);
                });
                std::string keys;
                for (const auto* info : {&open, &closed})
                    for (const auto& [key, ids] : *info)
                        keys += key + std::to_string(ids.asArray().size()) + " ";
                return keys + (effects.privateTablesChanged ? "private" : "");
            },
            "ZRInsertedRecords1 ZRInsertedRecords1 "},
        {"an index string alone",
            [](NoticeWorld& world) {
                locked(*world.roster, ZRAccess::write, [&]() ZR_NTS {
                    const auto index = world.ana->zrDatabaseImpl()->related(contactSlots().contactIndex);
                    index->setValueForKey("stringForIndexing", Value("other words"));
                });
                const bool saved = world.roster->saveAndTriggerSync(true, Value(Date{777}));
                return world.outcomeOf(saved) + ", " + dateOf(world.ana);
            },
            "saved: public ~Ana; private ~Ana, date 777.000000"},
        {"a date to keep",
            [](NoticeWorld& world) {
                platform::UserDefaults::standard().setBool(true, "ZRHindsightDebug");
                const platform::LogCapture log;
                const std::string before = dateOf(world.ana);
                locked(*world.roster, ZRAccess::write, [&]() ZR_NTS {
                    world.ana->nts_setContextInfo(Value(true), kZRPreserveModificationDate);
                });
                edit(world.ana, "a");
                const bool saved = world.roster->saveAndTriggerSync(true, Value(Date{777}));
                return world.outcomeOf(saved) + (dateOf(world.ana) == before ? ", kept" : ", touched")
                    + (log.contains("Record " + world.ana->uniqueId() + " is untouchable") ? ", told" : "");
            },
            "saved: public ~Ana; private ~Ana, kept, told"},
        {"dates",
            [](NoticeWorld& world) {
                platform::ManualClock clock(5000);
                const platform::ClockScope scope(clock);
                std::string dates;
                const std::function<bool()> saves[] = {
                    [&] { return world.roster->saveAndTriggerSync(true, Value(Date{777})); },
                    [&] {
                        return world.roster->saveAndTriggerSync_udpateModificationDate(
                            false, Value(Date{888}));
                    },
                    [&] { return world.roster->save(); },
                };
                for (const auto& save : saves) {
                    edit(world.ana, std::to_string(dates.size()));
                    dates += save() ? "" : "not saved ";
                    dates += dateOf(world.ana) + "; ";
                }
                return dates;
            },
            "date 777.000000; date 888.000000; date 5000.000000; "},
        {"deletions",
            [](NoticeWorld& world) {
                const platform::LogCapture log;
                const auto cards = {world.add("Bo"), world.add("Cy")};
                const auto group = ZRGroup::initWithRoster(world.roster);
                world.roster->removeRecord(world.add("Never saved"));
                world.roster->save();
                for (const auto& card : cards)
                    world.roster->removeRecord(card);
                world.roster->removeRecord(group);
                world.roster->save();
                world.roster->removeRecord(world.ana);
                world.roster->save();
                const auto inMemory = ZRRoster::emptyMemoryBackedRoster();
                const auto unseen = world.add("Di", inMemory);
                inMemory->save();
                inMemory->removeRecord(unseen);
                inMemory->save();
                return logged(log, "deleting ") + std::to_string(countOf(world.roster, "deleted records"))
                    + " kept";
            },
            "deleting 2 contacts; deleting 1 contact; 4 kept"},
        {"many records",
            [](NoticeWorld& world) {
                std::string text;
                for (const int count : {1000, 1001}) {
                    for (int i = 0; i < count; ++i)
                        person(world.roster, {{kZRFirstNameProperty, "Many"}});
                    text += world.outcomeOf(world.roster->save()) + " | ";
                    text += world.heard() + "\n";
                }
                return text;
            },
            "saved: public +1000 records; private +1000 records | public +1000 records; private +1000 "
            "records\n"
            "saved: public reload; private reload | public +1001 records; private +1001 records\n"},
        {"other rosters",
            [](NoticeWorld& world) {
                const std::string own = world.roster->databaseDirectory();
                const Ref<ZRRoster> rosters[] = {world.roster->parallelUniverseRoster(),
                    ZRRoster::rosterWithDatabaseDirectory(own, false),
                    ZRRoster::rosterWithDatabaseDirectory(own + "/other", false),
                    ZRRoster::emptyMemoryBackedRoster()};
                static_cast<void>(world.told());
                std::string text;
                for (const auto& roster : rosters) {
                    world.add("Bo", roster);
                    const bool saved = roster->save();
                    const bool isItsOwn = world.center->posted.empty()
                        || world.center->posted.front().object == roster->notificationID();
                    text += world.outcomeOf(saved) + (isItsOwn ? "\n" : ", in another's name\n");
                }
                return text;
            },
            "saved: public +Bo; private +Bo\nsaved: public +Bo; private +Bo\nsaved: nothing\nsaved: "
            "nothing\n"},
        {"an inert process",
            [](NoticeWorld& world) {
                const auto parallel = world.roster->parallelUniverseRoster();
                ZRRoster::setIsInert(true);
                world.add("Bo", parallel);
                world.add("Cy");
                return world.outcomeOf(parallel->save()) + " | " + world.outcomeOf(world.roster->save());
            },
            "not saved: nothing | saved: public +Cy; private +Cy"},
        {"the sender",
            [](NoticeWorld& world) {
                edit(world.ana, "a");
                world.roster->save();
                const auto& notice = world.center->posted.at(0);
                const auto& info = notice.userInfo;
                const bool isOurs = info[zr::kZRSenderProcessID] == Value(std::int64_t{getpid()})
                    && info[kZRUserUIDKey] == Value(std::int64_t{geteuid()})
                    && info[zr::kZRSenderProcessName] == Value(program_invocation_short_name);
                return std::string(isOurs ? "ours" : info.description()) + ", "
                    + textOf(info[kZRDatabaseDirectoryKey])
                    + (notice.object == world.roster->notificationID() ? ", named" : "")
                    + (world.center->posted.at(1).object ? "" : ", private unnamed");
            },
            "ours, absent, named, private unnamed"},
        {"the log of posts",
            [](NoticeWorld& world) {
                const platform::LogCapture log;
                edit(world.ana, "a");
                world.roster->save();
                __ZRLogNotifications = true;
                edit(world.ana, "b");
                world.roster->save();
                const std::string about = " for '" + world.roster->notificationID() + "'; ";
                std::string text = logged(log, "posting ");
                for (std::size_t at = 0; (at = text.find(about)) != std::string::npos;)
                    text.replace(at, about.size(), "; ");
                return text;
            },
            "posting kZRDatabaseChangedNotification; posting kZRDatabaseChangedNotificationPriv; "},
        {"whom the helper is launched for",
            [](NoticeWorld& world) {
                int launched = 0;
                std::vector<std::string> forMetadata;
                ZRServices::registered().launchOrWaitForDaemon = [&] { ++launched; };
                ZRServices::registered().processRecords = [&](ZRRoster&,
                                                              const std::vector<Ref<ZROSRecord>>& records) {
                    for (const auto& record : records)
                        forMetadata.emplace_back(record->entity().name());
                };
                edit(world.ana, "a");
                std::string text = world.outcomeOf(world.roster->save());
                text += ", launched " + std::to_string(launched);
                const std::string id = "00000000-0000-4000-8000-000000000000:ZRSubscribedPerson";
                world.name(id, "Sub");
                locked(*world.roster, ZRAccess::write, [&]() ZR_NTS {
                    const auto made =
                        world.roster->managedObjectContext()->insertObjectOfEntity("ZROSSubscribedContact");
                    made->setValueForKey("uniqueId", Value(id));
                });
                text += " | " + world.outcomeOf(world.roster->save());
                text += ", launched " + std::to_string(launched);
                world.roster->nts_Info()->setValue(
                    multiValue({{"https://example.org/a", kZRPublishLabel}}), kZRRemoteLocationProperty);
                world.roster->save();
                text += " | published, launched " + std::to_string(launched);
                return text + " | " + testing::PrintToString(forMetadata);
            },
            "saved: public ~Ana; private ~Ana, launched 0 | saved: public; private +Sub, launched 1 | "
            "published, launched 2 | { \"ZROSContact\", \"ZROSSubscribedContact\", \"ZROSRosterSource\" }"},
        {"caches of others",
            [](NoticeWorld& world) {
                const auto parallel = world.roster->parallelUniverseRoster();
                const std::string id = world.ana->uniqueId();
                const auto isCached = [&] {
                    return locked(*world.roster, ZRAccess::read,
                        [&]() ZR_NTS { return bool(world.roster->nts_CachedRecordForUniqueId(id)); });
                };
                const auto typeHere = [&] {
                    return world.roster->typeOfProperty("Colour", kZRPersonRecordType);
                };
                static_cast<void>(world.roster->recordForUniqueId(id));
                std::string text =
                    std::string(isCached() ? "cached" : "no") + ", " + std::to_string(typeHere());
                ZRPerson::addPropertiesAndTypes(Value::dictionary({{"Colour", 1}}), parallel.get());
                parallel->removeRecord(parallel->recordForUniqueId(id));
                parallel->save();
                return text + " | " + (isCached() ? "cached" : "no") + ", " + std::to_string(typeHere());
            },
            "cached, 0 | no, 1"},
    });

TEST(Saving, DoesAndTellsWhatIsPrescribed) { saving.play(); }

// ---- what fails

// The first write that a save makes goes wrong, the next save is as if it had never been tried.
const Role fails("fail to save", [](const Words&) {
    FaultyVfs disk;
    NoticeWorld world;
    const platform::LogCapture log;
    world.add("Bo");
    world.roster->removeRecord(world.ana);
    disk.failOnce(FaultyVfs::Operation::write, 1, SQLITE_FULL);
    std::string text = world.outcomeOf(world.roster->save());
    text += " | " + world.heard() + " | ";
    text += logged(log, "Roster failed to save: ").empty() ? "" : "why, ";
    text += logged(log, "-[ZRRoster save] failed. (").empty() ? "" : "that";
    text += world.roster->hasUnsavedChanges() ? ", unsaved | " : " | ";
    disk.letPass();
    text += world.outcomeOf(world.roster->save());
    return text + ", " + std::to_string(countOf(world.roster, "deleted records")) + " kept";
});

const Role saves("save a card", [](const Words& words) {
    platform::UserDefaults::standard().setBool(true, "LogSaveTimes");
    NoticeWorld world;
    world.add(words.at(0));
    return world.outcomeOf(world.roster->save());
});

const Role namesDirectory("name the directory", [](const Words& words) {
    platform::Preferences::shared().setArgument("ZRAlternateDataStoreDirectory", Value(words.at(0)));
    NoticeWorld world;
    edit(world.ana, "a");
    world.roster->save();
    return std::string(world.center->posted.at(0).userInfo[kZRDatabaseDirectoryKey].asText());
});

const Role cannotSave("save what may only be read", [](const Words&) {
    const auto roster = openShared();
    person(roster, {{kZRFirstNameProperty, "Bo"}});
    const std::string saved = roster->save() ? "saved" : "not saved";
    return saved + (roster->hasUnsavedChanges() ? ", unsaved: " : ": ") + roster->lastSaveError().text;
});

TEST(Saving, LeavesNothingOfASaveThatFailed)
{
    const Home home;
    const auto outcome = home.play("fail to save");
    EXPECT_EQ(outcome.answer,
        "not saved: nothing | nothing | why, that, unsaved | "
        "saved: public +Bo -Ana; private +Bo +log -Ana, 1 kept")
        << outcome.log;
}

TEST(Saving, TellsItsTimeWhereThatIsAskedFor)
{
    const Home home;
    EXPECT_THAT(home.play("save a card", {"Bo"}).log, HasSubstr("[LogSaveTimes] Time to save = 0."));
}

TEST(Saving, IsRefusedWhereTheFileMayOnlyBeRead)
{
    const Home home;
    ASSERT_EQ(home.play("save a card", {"Bo"}).status, 0);
    fs::permissions(home.storeFile(), fs::perms::owner_read);
    EXPECT_EQ(home.play("save what may only be read").answer,
        "not saved, unsaved: " + home.rosterDirectory().string() + ": the roster may not be written");
}

TEST(Saving, NamesADirectoryThatIsNotTheDefaultOne)
{
    const Home home;
    EXPECT_EQ(home.play("name the directory", {home.path() / "else"}).answer, home.path() / "else");
    EXPECT_EQ(home.play("name the directory", {home.rosterDirectory()}).answer, "");
}

} // namespace

} // namespace test
