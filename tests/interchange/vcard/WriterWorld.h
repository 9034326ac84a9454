// What tests of the writers share: the shared roster, emptied between tests, and a person as 4.0.
#pragma once

#include "core/ZRGroup.h"
#include "interchange/vcard/VCard40.h"
#include "platform/files/ZRUserDefaults.h"
#include "store/RosterWorld.h"

#include <gtest/gtest.h>

#include <string>

namespace test {

class WriterTest : public testing::Test {
protected:
    void SetUp() override { preferences->setObject("windows-1252", kZR21vCardEncoding); }
    void TearDown() override
    {
        roster->setMe(nullptr);
        for (const auto& records : {roster->people(), roster->groups()})
            for (const auto& record : records)
                roster->removeRecord(record);
        roster->save();
        for (const char* key :
            {kZR21vCardEncoding, "ZRIncludePhotosInVCard", "ZRIncludeNotesInVCard", "ZRUse21vCardFormat",
                "ZRPrivateVCardFieldsEnabled", "ZRPrivateVCardFields", "ZRDefaultAddressCountryCode"})
            preferences->removeObjectForKey(key);
    }

    Ref<ZRGroup> group(const char* name)
    {
        const auto made = ZRGroup::initWithRoster(roster);
        made->setValue(name, kZRGroupNameProperty);
        return made;
    }

    static std::string version40(const ZRPerson& person, ZRVCardOptions options = 0)
    {
        std::string card;
        zrAppendVCard40(person, card, options);
        return card;
    }

    const Ref<ZRRoster> roster = openShared();
    const Ref<ZRUserDefaults> preferences = ZRUserDefaults::rosterPreferences();
};

} // namespace test
