// When the user is asked whether others are to be told, and what the panel then does.
#include "MailWorld.h"

#include "platform/notify/NotificationCenter.h"
#include "platform/run/MainQueue.h"
#include "search/ZRSmartGroup.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace test {

namespace {

class RecordingHost final : public ZRChangeNotificationHost {
public:
    void askUser(const Question& question, std::function<void(bool)> answered) override
    {
        questions.push_back(question);
        _answered = std::move(answered);
    }
    void answer(bool notify) { std::exchange(_answered, nullptr)(notify); }
    /// The user never says anything.
    void forget() { _answered = nullptr; }

    void showPanel() override { isPanelOpen = true; }
    void hidePanel() override { isPanelOpen = false; }
    void showEmailCount(const std::string& text, bool sendEnabled) override
    {
        count = text;
        canSend = sendEnabled;
    }

    std::vector<Question> questions;
    bool isPanelOpen = false;
    std::string count;
    bool canSend = false;

private:
    std::function<void(bool)> _answered;
};

class ChangeNotification : public MailTest {
protected:
    ChangeNotification()
    {
        preferences->setBool(true, "ZRMailNotificationEnabled");
        watch->setHost(host);
    }
    ~ChangeNotification() override { host->forget(); }

    void post(std::string_view name, std::string_view list, const std::string& id) const
    {
        platform::NotificationCenter::shared().post({std::string(name), nullptr, listing(list, id)});
    }

    static Value listing(std::string_view list, const std::string& id)
    {
        return Value::dictionary({{std::string(list), Value::array({"another", id})}});
    }

    Ref<ZRGroup> someFriends() const
    {
        return group("Friends", {reachable("Ana", "ana@example.org"), reachable("Bo", "bo@example.org")});
    }

    const Ref<ZRChangeNotification> watch = ZRChangeNotification::initWithRoster(roster);
    const std::shared_ptr<RecordingHost> host = std::make_shared<RecordingHost>();
};

} // namespace

TEST_F(ChangeNotification, ComparesTheMeCardWithTheOneLastTold)
{
    EXPECT_TRUE(watch->_checkIfMeRecordHasChanged()) << "nothing was ever told";
    watch->updateDefaults();
    EXPECT_EQ(preferences->objectForKey("ZRMailNotificationMeRecordUID"), Value(me->uniqueId()));
    EXPECT_EQ(preferences->objectForKey("ZRMailNotificationMeVCardData"), Value::data("BEGIN:VCARD Mia "));
    EXPECT_FALSE(watch->_checkIfMeRecordHasChanged());

    me->setValue("moved", kZRNoteProperty);
    EXPECT_TRUE(watch->_checkIfMeRecordHasChanged()) << "another vCard";
    me->removeValueForProperty(kZRNoteProperty);
    EXPECT_FALSE(watch->_checkIfMeRecordHasChanged());

    roster->setMe(reachable("Mia", "mia@example.org"));
    EXPECT_TRUE(watch->_checkIfMeRecordHasChanged()) << "another card with the same vCard";
    roster->setMe(nullptr);
    EXPECT_FALSE(watch->_checkIfMeRecordHasChanged()) << "no Me card";
}

TEST_F(ChangeNotification, SeesNoChangeWhereNoVCardCanBeMade)
{
    ZRServices::registered().cardData = [](ZRRecord&) { return std::string(); };
    EXPECT_FALSE(watch->_checkIfMeRecordHasChanged());
    ZRServices::registered().cardData = nullptr;
    EXPECT_FALSE(watch->_checkIfMeRecordHasChanged());
}

TEST_F(ChangeNotification, AsksWhenANoticeNamesTheChangedMeCard)
{
    const auto friends = someFriends();
    const struct {
        std::string_view list;
        std::string id;
        bool asks;
    } cases[] = {{kZRInsertedRecords, me->uniqueId(), true}, {kZRUpdatedRecords, me->uniqueId(), true},
        {kZRDeletedRecords, me->uniqueId(), true}, {kZRUpdatedRecords, friends->uniqueId(), false},
        {kZRSenderProcessName, me->uniqueId(), false}};
    for (const auto& [list, id, asks] : cases) {
        host->questions.clear();
        preferences->removeObjectForKey("ZRMailNotificationMeRecordUID");
        watch->databaseChanged({"X", nullptr, listing(list, id)});
        EXPECT_EQ(host->questions.size(), asks ? 1U : 0U) << list;
        if (asks)
            host->answer(false);
    }
    watch->databaseChanged({"X", nullptr, {}});
    EXPECT_THAT(host->questions, IsEmpty());
    watch->updateDefaults();
    watch->databaseChanged({"X", nullptr, listing(kZRUpdatedRecords, me->uniqueId())});
    EXPECT_THAT(host->questions, IsEmpty()) << "this card was told of already";
}

TEST_F(ChangeNotification, HearsOfChangesHereAndElsewhereOnceItIsPreferred)
{
    const auto friends = someFriends();
    preferences->setBool(false, "ZRMailNotificationEnabled");
    EXPECT_FALSE(ZRChangeNotification::enabled());
    watch->observeChanges();
    preferences->setBool(true, "ZRMailNotificationEnabled");
    post(kZRDatabaseChangedNotification, kZRUpdatedRecords, me->uniqueId());
    EXPECT_THAT(host->questions, IsEmpty()) << "it did not begin to listen";

    watch->observeChanges();
    watch->observeChanges();
    post(kZRDatabaseChangedNotification, kZRUpdatedRecords, me->uniqueId());
    ASSERT_THAT(host->questions, SizeIs(1));
    host->answer(false);
    me->setValue("moved", kZRNoteProperty);
    post(kZRDatabaseChangedExternallyNotification, kZRUpdatedRecords, me->uniqueId());
    ASSERT_THAT(host->questions, SizeIs(2));
    host->answer(false);

    me->setValue("moved again", kZRNoteProperty);
    preferences->setBool(false, "ZRMailNotificationEnabled");
    post(kZRDatabaseChangedNotification, kZRUpdatedRecords, me->uniqueId());
    EXPECT_THAT(host->questions, SizeIs(2)) << "switched off while it listens";
}

TEST_F(ChangeNotification, AsksOnlyWhereThereIsAnOrdinaryGroup)
{
    watch->askUserToNotify();
    EXPECT_THAT(host->questions, IsEmpty());
    const auto smart = ZRRecord::initWithUniqueId(ZRSmartGroup::recordClassDescription, {}, roster);
    const auto subscribed = ZRRecord::initWithUniqueId(ZRSubscribedGroup::recordClassDescription, {}, roster);
    watch->askUserToNotify();
    EXPECT_THAT(host->questions, IsEmpty());
    EXPECT_TRUE(preferences->objectForKey("ZRMailNotificationMeRecordUID").isAbsent());

    const auto friends = someFriends();
    EXPECT_THAT(watch->simpleGroups(), ElementsAre(friends));
    watch->askUserToNotify();
    ASSERT_THAT(host->questions, SizeIs(1));
    EXPECT_EQ(host->questions[0].title, "Your card has changed");
    EXPECT_EQ(
        host->questions[0].message, "Would you like to send your new card to the people in your groups?");
    EXPECT_EQ(host->questions[0].notify, "Notify");
    EXPECT_EQ(host->questions[0].cancel, "Not Now");
    EXPECT_FALSE(watch->_checkIfMeRecordHasChanged()) << "asked is told";
}

TEST_F(ChangeNotification, AsksOneThingAtATime)
{
    const auto friends = someFriends();
    watch->askUserToNotify();
    watch->askUserToNotify();
    EXPECT_THAT(host->questions, SizeIs(1)) << "the question still stands";
    EXPECT_FALSE(host->isPanelOpen);
    host->answer(true);
    EXPECT_TRUE(host->isPanelOpen);
    watch->askUserToNotify();
    EXPECT_THAT(host->questions, SizeIs(1)) << "the panel is open";
    watch->cancel();
    EXPECT_FALSE(host->isPanelOpen);
    watch->askUserToNotify();
    EXPECT_THAT(host->questions, SizeIs(2));
    host->answer(false);
    EXPECT_FALSE(host->isPanelOpen);
}

TEST_F(ChangeNotification, RemembersNothingWithoutAHost)
{
    const auto friends = someFriends();
    watch->setHost(nullptr);
    watch->askUserToNotify();
    EXPECT_TRUE(watch->_checkIfMeRecordHasChanged());
}

TEST_F(ChangeNotification, CountsTheMessagesOfTheSelectedGroups)
{
    const auto none = group("None", {}), one = group("One", {reachable("Ana", "ana@example.org")}),
               two = someFriends();
    EXPECT_FALSE(watch->sendEnabled()) << "no panel";
    watch->showNotificationPanel();
    const struct {
        std::vector<Ref<ZRGroup>> groups;
        std::size_t count;
        std::string text;
    } cases[] = {{{}, 0, "0 people will get a message"}, {{none}, 0, "0 people will get a message"},
        {{one}, 1, "One person will get a message"}, {{one, two}, 2, "2 people will get a message"}};
    for (const auto& [groups, count, text] : cases) {
        watch->setSelectedGroups(groups);
        EXPECT_EQ(watch->emailCount(), count);
        EXPECT_EQ(host->count, text);
        EXPECT_EQ(host->canSend, count > 0);
    }
}

TEST_F(ChangeNotification, RemembersTheSelectedGroupsForLaterProcesses)
{
    const auto one = group("One", {}), two = group("Two", {});
    watch->setSelectedGroups({two});
    EXPECT_THAT(ZRChangeNotification::initWithRoster(roster)->selectedGroups(), IsEmpty());
    watch->updateDefaults();
    EXPECT_EQ(preferences->objectForKey("ZRMailNotificationSelectedGroups"), Value::array({two->uniqueId()}));
    const auto later = ZRChangeNotification::initWithRoster(roster);
    EXPECT_THAT(later->selectedGroups(), ElementsAre(two));
    later->updateDefaults();
    EXPECT_THAT(ZRChangeNotification::initWithRoster(roster)->selectedGroups(), ElementsAre(two));
    roster->removeRecord(two);
    EXPECT_THAT(later->selectedGroups(), IsEmpty());
}

TEST_F(ChangeNotification, SendsToTheSelectedGroupsAndClosesThePanel)
{
    watch->send();
    const auto friends = someFriends();
    watch->showNotificationPanel();
    watch->send();
    EXPECT_TRUE(host->isPanelOpen) << "nobody is selected";
    watch->setSelectedGroups({friends});
    watch->emailNotification()->setSubject("Moved");
    watch->send();
    finish();
    EXPECT_FALSE(host->isPanelOpen);
    EXPECT_FALSE(watch->emailNotification());
    ASSERT_THAT(carrier->sent, SizeIs(1));
    EXPECT_EQ(carrier->sent[0].message.subject, "Moved");
    EXPECT_THAT(carrier->sent[0].message.addresses, ElementsAre("ana@example.org", "bo@example.org"));
    EXPECT_FALSE(watch->_checkIfMeRecordHasChanged());
    EXPECT_THAT(ZRChangeNotification::initWithRoster(roster)->selectedGroups(), ElementsAre(friends));
}

TEST_F(ChangeNotification, SendsToOnePersonWithoutTellingTheGroups)
{
    const auto friends = someFriends();
    watch->requestIndividualUpdateFrom("cy@example.org", reachable("Cy", "cy@example.org"));
    EXPECT_TRUE(host->isPanelOpen);
    EXPECT_EQ(host->count, "One person will get a message");
    watch->setSelectedGroups({friends});
    EXPECT_EQ(watch->emailCount(), 1U);
    watch->send();
    finish();
    ASSERT_THAT(carrier->sent, SizeIs(1));
    EXPECT_THAT(carrier->sent[0].message.addresses, ElementsAre("cy@example.org"));
    EXPECT_TRUE(watch->_checkIfMeRecordHasChanged()) << "the groups were not told";
}

TEST_F(ChangeNotification, IsOneForTheSharedRoster)
{
    const auto shared = openShared();
    EXPECT_EQ(
        ZRChangeNotification::sharedChangeNotification(), ZRChangeNotification::sharedChangeNotification());
    EXPECT_FALSE(ZRChangeNotification::initWithRoster(nullptr));

    const auto mine = ZRPerson::initWithRoster(shared);
    mine->setValue("Shared Me", kZRFirstNameProperty);
    shared->setMe(mine);
    const auto friends = ZRGroup::initWithRoster(shared);
    const auto watcher = ZRChangeNotification::sharedChangeNotification();
    watcher->setHost(host);
    ASSERT_TRUE(shared->save());
    // What the save posted is heard on the main queue.
    platform::MainQueue::shared().sync([&] { EXPECT_THAT(host->questions, SizeIs(1)); });
    host->answer(false);
    watcher->setHost(nullptr);
}

} // namespace test
