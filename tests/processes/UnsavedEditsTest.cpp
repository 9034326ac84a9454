// What becomes of edits that are not saved yet when another process saves the same card first?
#include "processes/Crowd.h"

#include "platform/run/Log.h"

#include <gmock/gmock.h>

#include <fstream>

namespace {

using namespace test;
using testing::HasSubstr;

void addEmail(ZRRecord& card, const char* address)
{
    const Value value = card.valueForProperty(zr::kZREmailProperty);
    const auto* before = value.as<ZRMultiValue>();
    const auto after = before ? before->mutableCopy() : platform::makeRef<ZRMutableMultiValue>();
    after->addValue(Value(address), zr::kZREmailWorkLabel);
    card.setValue(Value(after), zr::kZREmailProperty);
}

void changeFirstEmail(ZRRecord& card, const char* address)
{
    const Value value = card.valueForProperty(zr::kZREmailProperty);
    const auto after = value.as<ZRMultiValue>()->mutableCopy();
    after->replaceValueAtIndex(0, Value(address));
    card.setValue(Value(after), zr::kZREmailProperty);
}

Json told(ZRRecord& card)
{
    const PlainRecord plain = plainRecord(card);
    Json emails = Json::array();
    for (const auto& entry : plain.entries)
        emails.push_back(entry.value);
    return {{"texts", plain.texts}, {"emails", emails}};
}

void saveOrThrow(ZRRoster& roster)
{
    if (!roster.save())
        throw std::runtime_error(roster.lastSaveError().text);
}

/// Makes the two cards. Answers their ids.
const Role makes("make two cards", [](const Words&) {
    const auto roster = openShared();
    const auto card =
        person(roster, {{zr::kZRFirstNameProperty, "first"}, {zr::kZRLastNameProperty, "last"}});
    addEmail(*card, "old@example.com");
    const auto doomed = person(roster, {{zr::kZRFirstNameProperty, "doomed"}});
    saveOrThrow(*roster);
    return Json{{"card", card->uniqueId()}, {"doomed", doomed->uniqueId()}}.dump();
});

/// Edits both without a save, and tells how they read once the other has saved. Words: the flags' folder, the
/// ids.
const Role holds("hold unsaved edits", [](const Words& words) {
    const platform::LogCapture log;
    const auto roster = openShared();
    const auto card = roster->recordForUniqueId(words.at(1)), doomed = roster->recordForUniqueId(words.at(2));
    card->setValue(Value("mine"), zr::kZRFirstNameProperty);
    card->setValue(Value("my note"), zr::kZRNoteProperty);
    addEmail(*card, "mine@example.com");
    doomed->setValue(Value("mine"), zr::kZRJobTitleProperty);
    std::ofstream(words.at(0) + "/held");
    waitUntil("the other has saved", [&] { return fs::exists(words.at(0) + "/changed"); });
    waitUntilDrained(*roster);
    Json answer{
        {"unsaved", told(*card)}, {"doomed", told(*doomed)}, {"hasChanges", roster->hasUnsavedChanges()}};
    saveOrThrow(*roster);
    answer["saved"] = told(*card);
    answer["log"] = log.lines();
    return answer.dump();
});

/// Changes one card, deletes the other, and saves. Words: the ids.
const Role changes("change both cards", [](const Words& words) {
    const auto roster = openShared();
    const auto card = roster->recordForUniqueId(words.at(0));
    card->setValue(Value("theirs"), zr::kZRFirstNameProperty);
    card->setValue(Value("theirs"), zr::kZRLastNameProperty);
    card->setValue(Value("theirs"), zr::kZRJobTitleProperty);
    changeFirstEmail(*card, "changed@example.com");
    addEmail(*card, "theirs@example.com");
    roster->removeRecord(roster->recordForUniqueId(words.at(1)));
    saveOrThrow(*roster);
    return std::string("{}");
});

TEST(UnsavedEdits, StayOverWhatOthersSaveAndTheRestIsFresh)
{
    const Crowd crowd(1, 0);
    const Json ids = crowd.ask("make two cards");
    const std::string card = ids.at("card"), doomed = ids.at("doomed");
    Process holder(crowd.start("hold unsaved edits", {crowd.home().path().string(), card, doomed}));
    waitUntil("the edits are made", [&] { return crowd.isRaised("held") || holder.hasEnded(); });
    crowd.ask("change both cards", {card, doomed});
    crowd.raise("changed");
    const Json answer = toldBy(holder);

    const Json texts{{"First", "mine"}, {"Last", "theirs"}, {"JobTitle", "theirs"}, {"Note", "my note"}};
    EXPECT_EQ(answer.at("unsaved").at("texts"), texts);
    EXPECT_EQ(answer.at("saved").at("texts"), texts);
    const std::vector<std::string> emails = answer.at("saved").at("emails");
    EXPECT_THAT(emails,
        testing::UnorderedElementsAre("changed@example.com", "mine@example.com", "theirs@example.com"));
    EXPECT_TRUE(answer.at("hasChanges"));

    EXPECT_TRUE(answer.at("doomed").at("texts").empty()) << answer.at("doomed");
    const std::vector<std::string> log = answer.at("log");
    EXPECT_THAT(log, testing::Contains(HasSubstr("was deleted elsewhere; its unsaved changes are dropped")));
    EXPECT_THAT(log, testing::Contains(HasSubstr("Object may have been deleted in another process.")));
    const Json file = crowd.ask("look");
    EXPECT_FALSE(file.at("fetched").contains(doomed));
    EXPECT_THAT(file.at("fetched").at(card).get<std::string>(), HasSubstr("First=mine JobTitle=theirs"));
    // The text to search in once kept the address that the other had changed.
    EXPECT_EQ(file.at("problems"), Json::array());
}

} // namespace
