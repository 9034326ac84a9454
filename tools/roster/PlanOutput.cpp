// How the plan of an import is written down.
#include "PlanOutput.h"

#include "CardJson.h"
#include "ImportOutput.h"

#include "core/ZRConstants.h"
#include "core/ZRLabels.h"
#include "core/ZRPerson.h"
#include "interchange/import/ImportPlan.h"
#include "interchange/vcard/prepare/CanonicalCard.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace {

using interchange::ImportDecision;
using interchange::ValueChange;
using platform::Value;

constexpr std::string_view kPicture = "Picture";

std::string_view wordFor(ImportDecision::Fate fate)
{
    constexpr std::string_view words[] = {"add", "same", "update", "replace", "keep"};
    return words[static_cast<std::size_t>(fate)];
}

std::string_view wordFor(ValueChange::Kind kind)
{
    constexpr std::string_view words[] = {"added", "extended", "replaced", "removed", "displaced"};
    return words[static_cast<std::size_t>(kind)];
}

bool isPicture(std::string_view property) { return property == zr::kZRImageProperty; }

std::string nameOf(const std::string& property)
{
    return isPicture(property) ? std::string(kPicture) : property;
}

std::string sizeOf(const Value& picture) { return fmt::format("{} bytes", picture.asBytes().size()); }

Json jsonOf(const Value& value, const std::string& property)
{
    return isPicture(property) && !value.isNothing() ? Json(sizeOf(value)) : valueJson(value, property);
}

Json changeJson(const ValueChange& change)
{
    Json json{{"property", nameOf(change.property)}};
    if (!change.label.empty())
        json["label"] = change.label;
    json["what"] = std::string(wordFor(change.kind));
    if (!change.before.isNothing())
        json["before"] = jsonOf(change.before, change.property);
    if (!change.after.isNothing())
        json["after"] = jsonOf(change.after, change.property);
    json["lost"] = change.isLoss;
    return json;
}

/// On one line; what a field would need several for is written as in JSON.
std::string textOf(const Value& value, const std::string& property)
{
    const Json json = jsonOf(value, property);
    const std::string text = json.is_string() ? json.get<std::string>() : json.dump();
    return text.find('\n') == std::string::npos ? text : json.dump();
}

/// "Email (home): ana@old.example, replaced by ana@new.example".
std::string lossText(const ValueChange& change)
{
    std::string text = nameOf(change.property);
    if (!change.label.empty())
        text += fmt::format(" ({})", ZRLocalizedPropertyOrLabel(change.label));
    text += ": " + textOf(change.before, change.property);
    if (change.kind == ValueChange::Kind::displaced)
        return text + " (of the new card: another of its entries has the label)";
    return change.after.isNothing() ? text : text + ", replaced by " + textOf(change.after, change.property);
}

std::vector<std::string> fieldsOf(const ImportDecision& decision)
{
    std::vector<std::string> fields;
    for (const auto& property : interchange::changedProperties(decision.changes))
        fields.push_back(nameOf(property));
    return fields;
}

std::string actionOf(const ZRvCardController::CardDecided& card)
{
    if (card.group)
        return "group";
    return card.person ? std::string(wordFor(card.decision.fate)) : "refuse";
}

/// Who or what the card is, or why it is refused.
std::string subjectOf(const ZRvCardController::CardDecided& card)
{
    if (card.group)
        return fmt::format("{} ({} in it)", card.group->name, card.group->members.size());
    return card.person ? displayName(*card.person) : card.firstLine + ": " + card.refusal;
}

/// One line for the card, and one for each value that would be lost.
std::string cardText(const ZRvCardController::CardDecided& card)
{
    std::string text =
        fmt::format("{}: card {}: {} {}", card.file, card.number, actionOf(card), subjectOf(card));
    const auto& decision = card.decision;
    if (decision.existing)
        text += fmt::format(" ({})", decision.existing->uniqueId().substr(0, 8));
    if (!decision.changes.empty())
        text += ": " + fmt::format("{}", fmt::join(fieldsOf(decision), ", "));
    text += "\n";
    for (const auto& change : decision.changes)
        if (change.isLoss)
            text += fmt::format("    loses {}\n", lossText(change));
    return text;
}

} // namespace

PlanPrinter::PlanPrinter(ZRvCardController& controller, bool asJson, bool withCards)
    : _asJson(asJson), _withCards(withCards)
{
    controller.cardWasDecided = [this](const auto& card) { add(card); };
}

void PlanPrinter::add(const ZRvCardController::CardDecided& card)
{
    if (_asJson)
        return addJson(card);
    std::string text = cardText(card);
    if (_withCards)
        for (const char c : card.text)
            if (c != '\r')
                text += c;
    print(text);
}

void PlanPrinter::addJson(const ZRvCardController::CardDecided& card)
{
    Json json{{"file", card.file}, {"card", card.number}, {"line", card.line}, {"action", actionOf(card)}};
    if (card.group) {
        json["name"] = card.group->name;
        json["members"] = card.group->members;
    } else if (card.person) {
        json["name"] = displayName(*card.person);
    } else {
        json["text"] = card.firstLine;
        json["reason"] = card.refusal;
    }
    if (card.decision.existing)
        json["id"] = card.decision.existing->uniqueId();
    if (!card.decision.changes.empty()) {
        json["fields"] = fieldsOf(card.decision);
        for (const auto& change : card.decision.changes)
            json["changes"].push_back(changeJson(change));
    }
    if (_withCards)
        json["prepared"] = card.text;
    _cards.push_back(std::move(json));
}

void PlanPrinter::finish(const ZRvCardImport& result)
{
    if (_asJson) {
        Json plan = resultJson(result);
        plan["cards"] = std::move(_cards);
        return printJson(plan);
    }
    if (_withCards)
        for (const auto& report : result.reports)
            print(report.text());
    print(countsText(result, "would be added") + "; nothing was written\n");
}
