// Steps made, undone and redone by chance, each by a process of its own: the roster is always one that it
// was.
#include "history/RandomEdits.h"
#include "history/ZRHistory.h"
#include "history/ZRHistoryStep.h"
#include "store/RosterSnapshot.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <stdexcept>

namespace {

using namespace test;

// A process takes a quarter of a second with sanitizers. ROSTER_STEPS=200 is the full length anywhere.
#ifdef SLOW_BUILD
constexpr int kUsualSteps = 50;
#else
constexpr int kUsualSteps = 200;
#endif

int steps()
{
    const char* const wanted = std::getenv("ROSTER_STEPS");
    return wanted ? std::atoi(wanted) : kUsualSteps;
}

/// The whole roster as one text, a record a line; the history does not keep the list of the last import.
std::string textOfRoster(const Ref<ZRRoster>& roster)
{
    std::string text;
    for (const auto& [id, content] : snapshotOf(roster))
        if (id != "last import")
            text += id + " = " + content + "\n\n";
    return text;
}

constexpr char kBetween = '\x1e';

/// Answers what was found, and what the roster is afterwards as this process sees it.
const Role acts("act on the history", [](const Words& words) {
    const auto roster = openShared();
    const std::string found = textOfRoster(roster);
    if (words.at(0) == "edit") {
        const ZRHistoryStep step(*roster, "edit " + words.at(1));
        editAtRandom(roster, static_cast<std::uint32_t>(std::stoul(words.at(1))));
        return found + kBetween + textOfRoster(roster);
    }
    ZRHistory history(*roster);
    const auto outcome = words.at(0) == "undo" ? history.undo() : history.redo();
    if (outcome.status == ZRHistoryOutcome::Status::nothing)
        return found + kBetween + found;
    if (outcome.status != ZRHistoryOutcome::Status::done)
        throw std::runtime_error(fmt::format("{}: {}, {} conflicts, the first: {}", words.at(0),
            outcome.error.text, outcome.conflicts.size(),
            outcome.conflicts.empty() ? ""
                                      : outcome.conflicts[0].uniqueId + " " + outcome.conflicts[0].reason));
    return found + kBetween + textOfRoster(roster);
});

/// A roster whose states are known, and where in them it stands.
class Walk {
public:
    void act(const std::string& what, const std::string& seed)
    {
        const auto outcome = _home.play("act on the history", {what, seed});
        ASSERT_EQ(outcome.status, 0) << outcome.log;
        const auto cut = outcome.answer.find(kBetween);
        ASSERT_NE(cut, std::string::npos);
        const std::string found = outcome.answer.substr(0, cut), left = outcome.answer.substr(cut + 1);
        if (_states.empty())
            _states.push_back(found);
        EXPECT_EQ(found, _states[_at]) << "what a new process found";
        move(what, left);
    }

    std::size_t position() const { return _at; }

private:
    void move(const std::string& what, const std::string& left)
    {
        if (what == "edit") {
            // An edit that came to nothing is no step, and leaves what can be redone.
            if (left == _states[_at])
                return;
            _states.resize(_at + 1);
            _states.push_back(left);
            ++_at;
            return;
        }
        if (what == "undo")
            _at -= _at > 0;
        else
            _at += _at + 1 < _states.size();
        EXPECT_EQ(left, _states[_at]) << "what " << what << " left";
    }

    Home _home;
    std::vector<std::string> _states;
    std::size_t _at = 0;
};

class RandomSteps : public testing::TestWithParam<std::uint32_t> { };

TEST_P(RandomSteps, LeadToStatesThatWereThere)
{
    std::mt19937 random(GetParam());
    Walk walk;
    const auto act = [&](const std::string& what, std::uint32_t seed) {
        SCOPED_TRACE(fmt::format("{} with seed {}", what, seed));
        walk.act(what, std::to_string(seed));
        return !testing::Test::HasFailure();
    };
    const int last = steps();
    for (int step = 0; step < last; ++step) {
        const auto chance = random() % 10;
        ASSERT_TRUE(act(chance < 6 ? "edit"
                : chance < 8       ? "undo"
                                   : "redo",
            static_cast<std::uint32_t>(random() % 1'000'000)));
    }
    EXPECT_GT(walk.position(), 5U);
    while (walk.position() > 0)
        ASSERT_TRUE(act("undo", 0));
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomSteps, testing::Values(20261122U));

} // namespace
