// How many records are put in order and printed.
#include "Listing.h"

#include "CardJson.h"

#include "core/ZRNameOrder.h"
#include "core/ZRPerson.h"

#include <fmt/format.h>

#include <algorithm>

namespace {

/// What people copy from a list to name a card in another command.
constexpr std::size_t kShownOfId = 8;

ZRNameComparison comparisonFor(ZRNameOrder order)
{
    return order == ZRNameOrder::preferred ? _createCompartorContext()
                                           : ZRNameComparison{order == ZRNameOrder::lastName};
}

} // namespace

ZRNameOrder orderOf(const Options& options)
{
    return options.sort == "first" ? ZRNameOrder::firstName
        : options.sort == "last"   ? ZRNameOrder::lastName
                                   : ZRNameOrder::preferred;
}

void arrange(const Options& options, ZRRoster& roster, ZRRecordList& people)
{
    const auto comparison = comparisonFor(orderOf(options));
    locked(roster, ZRAccess::read, [&] {
        std::ranges::stable_sort(people, [&](const auto& a, const auto& b) {
            return ZRComparePeopleName(
                       static_cast<const ZRPerson&>(*a), static_cast<const ZRPerson&>(*b), comparison)
                < 0;
        });
    });
    if (options.limit > 0 && people.size() > options.limit)
        people.resize(options.limit);
}

void printRecords(const Options& options, ZRRoster& roster, const ZRRecordList& records)
{
    if (options.json) {
        roster.prefetchDataForRecords(records);
        Json cards = Json::array();
        for (const auto& record : records)
            cards.push_back(cardJson(*record));
        return printJson(cards);
    }
    std::string text;
    for (const auto& record : records)
        text += fmt::format("{}  {}\n", record->uniqueId().substr(0, kShownOfId), displayName(*record));
    print(text);
}
