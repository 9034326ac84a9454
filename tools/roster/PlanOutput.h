// What `roster import --plan` tells of each card.
#pragma once

#include "Command.h"

#include "interchange/import/ZRvCardController.h"

/// Prints what would become of each card of an import: whether it is new, who it would be there already,
/// which fields of theirs would change, and each value that would be lost. The cards themselves, when asked.
class PlanPrinter {
public:
    PlanPrinter(ZRvCardController& controller, bool asJson, bool withCards);
    /// Behind the last card: the findings, or the whole as JSON.
    void finish(const ZRvCardImport& result);

private:
    void add(const ZRvCardController::CardDecided& card);
    void addJson(const ZRvCardController::CardDecided& card);

    const bool _asJson;
    const bool _withCards;
    Json _cards = Json::array();
};
