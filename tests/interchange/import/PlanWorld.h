// Imports of cards that are written in one line, into the roster of a host.
#pragma once

#include "interchange/import/ImportPlan.h"
#include "interchange/import/ZRvCardController.h"
#include "merge/MergeWorld.h"

#include <string>
#include <string_view>
#include <vector>

namespace test {

using interchange::DuplicateHandling;
using interchange::ImportDecision;
using Lines = std::vector<std::string>;

/// A roster of its own for each test, and imports into it.
class PlanTest : public MergeTest {
public:
    /// What became of each card, a word each; "refuse" is none of them.
    static const char* wordFor(const ImportDecision& decision)
    {
        constexpr const char* words[] = {"add", "same", "update", "replace", "keep"};
        return words[static_cast<std::size_t>(decision.fate)];
    }

protected:
    std::string vCard(const ZRPerson& card)
    {
        return card._vCardRepresentationAsStringUsingImageCache(
            Value(), kZRVCardWithNote | kZRVCardWithPhoto);
    }

    std::string vCards(const Lines& lines)
    {
        std::string text;
        for (const auto& line : lines)
            text += vCard(*imported(line));
        return text;
    }

    struct Done {
        std::string fates;
        std::vector<ImportDecision> decisions;
        ZRvCardImport result;
    };

    Done import(const std::string& data, DuplicateHandling handling = DuplicateHandling::update,
        const Ref<ZRGroup>& into = nullptr,
        ZRvCardController::Outcome outcome = ZRvCardController::Outcome::saved)
    {
        Done done;
        ZRvCardController controller(roster);
        controller.setDuplicateHandling(handling);
        controller.setOutcome(outcome);
        controller.cardWasDecided = [&](const ZRvCardController::CardDecided& card) {
            done.fates += (done.fates.empty() ? "" : " ")
                + std::string(card.person ? wordFor(card.decision) : "refuse");
            done.decisions.push_back(card.decision);
        };
        EXPECT_TRUE(controller.importVCardData(data, into)) << controller.result().failure.text;
        done.result = controller.result();
        return done;
    }

    Done plan(const std::string& data, DuplicateHandling handling = DuplicateHandling::update)
    {
        return import(data, handling, nullptr, ZRvCardController::Outcome::readOnly);
    }
};

} // namespace test
