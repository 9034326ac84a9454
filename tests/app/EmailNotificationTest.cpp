// To whom the message goes, what is enclosed, and what is left behind.
#include "MailWorld.h"

#include "platform/files/Directories.h"

#include <fstream>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace test {

namespace {

class EmailNotification : public MailTest {
protected:
    void send(const std::string& address = "ana@example.org")
    {
        message->setSendNotificationToAddress(address, nullptr);
        message->sendMailNotifications();
        finish();
    }

    std::vector<std::string> addresses() const
    {
        std::vector<std::string> all;
        for (const auto& [address, person] : message->people())
            all.push_back(address);
        return all;
    }

    static bool isTemporaryFolderEmpty()
    {
        return fs::is_empty(platform::Directories::current()->temporary());
    }

    const Ref<ZREmailNotification> message = ZREmailNotification::emailNotification(roster);
};

} // namespace

TEST_F(EmailNotification, GoesToTheMembersOfGroupsOnce)
{
    const auto ana = reachable("Ana", "ana@example.org"), bo = reachable("Bo", "bo@example.org"),
               twin = reachable("Twin", "bo@example.org"),
               mute = person(roster, {{kZRFirstNameProperty, "Mute"}});
    const auto friends = group("Friends", {ana, bo, me, mute}), club = group("Club", {twin, ana});
    message->setSendNotificationToGroups({friends, club});
    EXPECT_THAT(addresses(), ElementsAre("ana@example.org", "bo@example.org"));
    EXPECT_EQ(message->people()["ana@example.org"], ana);
    EXPECT_EQ(message->emailCount(), 2U);
    message->setSendNotificationToAddress("x@example.org", bo);
    EXPECT_THAT(addresses(), ElementsAre("x@example.org")) << "one address takes the place of the groups";
    message->setSendNotificationToGroups({});
    EXPECT_EQ(message->emailCount(), 0U);
}

TEST_F(EmailNotification, EnclosesTheCardInAPrivateFileThatGoesAgain)
{
    const fs::path list = platform::Directories::current()->configHome() + "/mimeapps.list";
    fs::create_directories(list.parent_path());
    std::ofstream(list) << "[Default Applications]\nx-scheme-handler/mailto=org.example.Mail.desktop\n";
    const auto friends =
        group("Friends", {reachable("Ana", "ana@example.org"), reachable("Bo", "bo@example.org")});
    message->setSubject("New address");
    message->setUserMessage("I have moved.");
    message->setSendNotificationToGroups({friends});
    message->sendMailNotifications();
    finish();
    fs::remove(list);

    ASSERT_THAT(carrier->sent, SizeIs(1));
    const auto& [sent, card, fileMode, folderMode] = carrier->sent.front();
    EXPECT_EQ(sent.application, "org.example.Mail.desktop");
    EXPECT_EQ(fs::path(sent.file).filename(), "Mia.vcf");
    EXPECT_THAT(sent.addresses, ElementsAre("ana@example.org", "bo@example.org"));
    EXPECT_EQ(sent.subject, "New address");
    EXPECT_EQ(sent.message, "I have moved.");
    EXPECT_EQ(card, "BEGIN:VCARD Mia ");
    EXPECT_EQ(fileMode, 0600U);
    EXPECT_EQ(folderMode, 0700U);
    EXPECT_TRUE(isTemporaryFolderEmpty());
}

TEST_F(EmailNotification, NamesTheFileAfterAnyName)
{
    const struct {
        std::string name;
        std::string file;
    } cases[] = {{"Ana/Lima", "Ana-Lima.vcf"}, {"../../Ana", "..-..-Ana.vcf"},
        {std::string(300, 'a'), std::string(80, 'a') + ".vcf"}};
    for (const auto& [name, file] : cases) {
        carrier->sent.clear();
        me->setValue(name, kZRFirstNameProperty);
        me->clearTemporaryCache();
        send();
        ASSERT_THAT(carrier->sent, SizeIs(1)) << name;
        EXPECT_EQ(fs::path(carrier->sent.front().message.file).filename(), file);
        EXPECT_EQ(carrier->sent.front().card, "BEGIN:VCARD " + name + " ");
    }
}

TEST_F(EmailNotification, LogsWhyItWasNotSent)
{
    const std::string failed = "ZRChangeNotification executing quillonscript got error:";
    const platform::LogCapture log;
    carrier->answer = platform::Error{"Mail", 1, "no mail program"};
    send();
    EXPECT_TRUE(log.contains(failed + "no mail program"));
    EXPECT_TRUE(isTemporaryFolderEmpty());

    carrier->sent.clear();
    const auto before = platform::Directories::install(platform::makeXDGDirectories(
        [](const char* name) { return std::string_view(name) == "TMPDIR" ? "/dev/null/none" : nullptr; }));
    send();
    platform::Directories::install(before);
    EXPECT_TRUE(log.contains(failed + "/dev/null/none/"));

    roster->setMe(nullptr);
    send();
    EXPECT_TRUE(log.contains(failed + "there is no Me card to enclose"));
    EXPECT_THAT(carrier->sent, IsEmpty());
}

TEST_F(EmailNotification, IsOnlyLoggedWhereNoCarrierIsInstalled)
{
    MailCarrier::install(nullptr);
    const platform::LogCapture log;
    message->setSubject("New address");
    send();
    EXPECT_TRUE(log.contains("/Mia.vcf to ana@example.org by nobody: New address"));
    EXPECT_TRUE(isTemporaryFolderEmpty());
}

TEST_F(EmailNotification, NeedsPeople)
{
    message->sendMailNotifications();
    finish();
    EXPECT_THAT(carrier->sent, IsEmpty());
}

TEST(EmailNotificationWithoutRoster, IsAbsent)
{
    EXPECT_FALSE(ZREmailNotification::emailNotification(nullptr));
    const auto shared = openShared();
    EXPECT_TRUE(ZREmailNotification::emailNotification());
}

} // namespace test
