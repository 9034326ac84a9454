// A roster with people to tell by mail, and what stands in for the user's programs.
#pragma once

#include "app/MailCarrier.h"
#include "app/ZRChangeNotification.h"
#include "platform/files/Files.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/run/Log.h"
#include "platform/run/SuddenTermination.h"
#include "store/RosterWorld.h"
#include "store/ZRServices.h"
#include "support/TemporaryFolder.h"
#include "support/Waiting.h"

#include <gmock/gmock.h>

namespace test {

/// Looks into what it is given, and keeps what it saw.
class RecordingCarrier final : public MailCarrier {
public:
    struct Sent {
        MailMessage message;
        std::string card;
        mode_t fileMode = 0;
        mode_t folderMode = 0;
    };

    platform::Result<void> sendemail(const MailMessage& message) override
    {
        const auto card = platform::readFile(message.file);
        sent.push_back({message, card ? *card : card.error().text, modeOf(message.file),
            modeOf(fs::path(message.file).parent_path())});
        return answer;
    }

    std::vector<Sent> sent;
    platform::Result<void> answer;
};

/// Rosters whose vCards are a line with the name and the note.
class MailTest : public testing::Test {
protected:
    MailTest()
    {
        ZRServices::registered().cardData = [](ZRRecord& card) {
            return "BEGIN:VCARD " + static_cast<ZRPerson&>(card).compositeName() + " "
                + std::string(card.nts_ValueForProperty(kZRNoteProperty).asText());
        };
        for (const char* key : {"ZRMailNotificationEnabled", "ZRMailNotificationMeRecordUID",
                 "ZRMailNotificationMeVCardData", "ZRMailNotificationSelectedGroups"})
            preferences->removeObjectForKey(key);
        roster->setMe(me);
    }
    ~MailTest() override
    {
        MailCarrier::install(_before);
        ZRServices::registered().cardData = _service;
    }

    Ref<ZRPerson> reachable(const std::string& name, const std::string& address) const
    {
        return person(roster,
            {{kZRFirstNameProperty, name}, {kZREmailProperty, multiValue({{address, kZREmailWorkLabel}})}});
    }

    Ref<ZRGroup> group(const std::string& name, const std::vector<Ref<ZRPerson>>& members) const
    {
        const auto made = ZRGroup::initWithRoster(roster);
        made->setValue(name, kZRGroupNameProperty);
        for (const auto& member : members)
            made->addMember(*member);
        return made;
    }

    /// Waits until what was sent has left, files included.
    static void finish()
    {
        ASSERT_TRUE(eventually([] { return platform::suddentermination::balance() == 0; }));
    }

    const Ref<ZRUserDefaults> preferences = ZRUserDefaults::rosterPreferences();
    const Ref<ZRRoster> roster = ZRRoster::emptyMemoryBackedRoster();
    const Ref<ZRPerson> me = reachable("Mia", "mia@example.org");
    const std::shared_ptr<RecordingCarrier> carrier = std::make_shared<RecordingCarrier>();

private:
    const std::shared_ptr<MailCarrier> _before = MailCarrier::install(carrier);
    const std::function<std::string(ZRRecord&)> _service = ZRServices::registered().cardData;
};

} // namespace test
