// How the Me card and its vCard are read together.
#include "app/MeCard.h"

#include "store/ZRServices.h"

std::optional<MeCard> presentMeCard(ZRRoster& roster)
{
    return locked(roster, ZRAccess::read, [&]() ZR_NTS -> std::optional<MeCard> {
        const auto& cardData = ZRServices::registered().cardData;
        const auto me = roster.nts_Me();
        std::string data = me && cardData ? cardData(*me) : std::string();
        return data.empty() ? std::nullopt : std::optional(MeCard{me, std::move(data)});
    });
}
