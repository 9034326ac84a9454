// What does a process do whose database is taken away, or replaced by another, while it is at work?
#include "processes/Crowd.h"

#include "platform/run/Log.h"

#include <gtest/gtest.h>

#include <fstream>

namespace {

using namespace test;

/// Holds every record, one with an unsaved edit, until the file is another; then does what it is told and
/// goes on. Words: the flags' folder, and how it meets the new file ("save", "fetch" or "read").
const Role works("work on", [](const Words& words) {
    const platform::LogCapture log;
    const auto roster = openShared();
    ZRRecordList held = roster->people();
    const auto unread = roster->groups();
    for (const auto& card : held)
        plainRecord(*card);
    held.front()->setValue(Value("old edit"), zr::kZRFirstNameProperty);
    std::ofstream(words.at(0) + "/held");
    waitUntil("the file is another", [&] { return fs::exists(words.at(0) + "/replaced"); });

    Json answer;
    if (words.at(1) == "save")
        answer["saved"] = roster->save();
    else if (words.at(1) == "fetch")
        roster->people();
    else
        for (const auto& group : unread)
            plainRecord(*group);
    waitUntil("it has started over", [&] { return plainRecord(*held.front()).isEmpty(); });
    Json left = Json::array();
    for (const auto& card : held)
        if (!plainRecord(*card).isEmpty())
            left.push_back(card->uniqueId());
    answer["left"] = left;
    answer["isLogged"] = log.contains("Object may have been deleted in another process.");
    answer["hasChanges"] = roster->hasUnsavedChanges();
    const auto card = person(roster, {{zr::kZRFirstNameProperty, "new edit"}});
    answer["savedAfterwards"] = roster->save();
    answer["card"] = card->uniqueId();
    answer["fetched"] = fetchedLines(*roster);
    return answer.dump();
});

const Role adds("add a card", [](const Words&) {
    const auto roster = openShared();
    const auto card = person(roster, {{zr::kZRFirstNameProperty, "added"}});
    if (!roster->save())
        throw std::runtime_error(roster->lastSaveError().text);
    return Json(card->uniqueId()).dump();
});

struct Meeting {
    const char* name;
    const char* how;
    bool isReplaced;
};

class ReplacedFile : public testing::TestWithParam<Meeting> {
protected:
    /// Moves the database aside with what SQLite keeps beside it, as whoever restores a backup does.
    void moveAside() const
    {
        for (const char* companion : {"", "-wal", "-shm"})
            if (const auto file = store + companion; fs::exists(file))
                fs::rename(file, store + ".aside" + companion);
    }

    void putInPlace(const Crowd& other) const
    {
        for (const char* companion : {"-wal", ""})
            if (const auto file = other.home().storeFile().string() + companion; fs::exists(file))
                fs::copy_file(file, store + companion);
    }

    Crowd crowd;
    const std::string store = crowd.home().storeFile().string();
};

TEST_P(ReplacedFile, IsTakenUpWithoutAWriteOfOldRows)
{
    const Meeting& meeting = GetParam();
    const Lines before = crowd.ask("look").at("fetched");
    Process process(crowd.start("work on", {crowd.home().path().string(), meeting.how}));
    crowd.awaitFlag("held", process);

    moveAside();
    Lines expected;
    if (meeting.isReplaced) {
        putInPlace(Crowd(3, 1));
        // Closing the old file once took the log of the new one along, with what others had saved there. The
        // notice of their save starts the process over, so that the one that is to find out by itself gets
        // none.
        if (meeting.how != std::string_view("save"))
            crowd.ask("add a card");
        expected = crowd.ask("look").at("fetched");
    }
    crowd.raise("replaced");
    const Json told = toldBy(process);

    EXPECT_EQ(told.value("saved", false), false) << "old rows went into the new file";
    EXPECT_EQ(told.at("left"), Json::array());
    EXPECT_EQ(told.at("isLogged"), Json(true));
    EXPECT_EQ(told.at("hasChanges"), Json(false));
    EXPECT_EQ(told.at("savedAfterwards"), Json(true));
    expected[told.at("card")] = "First=new edit ";
    EXPECT_EQ(differences(expected, told.at("fetched")), "");
    const Json file = crowd.ask("look");
    EXPECT_EQ(differences(expected, file.at("fetched")), "");
    EXPECT_EQ(file.at("problems"), Json::array());

    fs::remove(store + "-wal");
    fs::remove(store + "-shm");
    for (const char* companion : {"", "-wal"})
        if (const auto aside = store + ".aside" + companion; fs::exists(aside))
            fs::rename(aside, store + companion);
    EXPECT_EQ(differences(before, crowd.ask("look").at("fetched")), "") << "the old file was written";
}

INSTANTIATE_TEST_SUITE_P(Found, ReplacedFile,
    testing::Values(Meeting{"BySave", "save", true}, Meeting{"ByFetch", "fetch", true},
        Meeting{"ByRead", "read", true}, Meeting{"GoneBySave", "save", false},
        Meeting{"GoneByFetch", "fetch", false}),
    [](const auto& test) { return std::string(test.param.name); });

} // namespace
