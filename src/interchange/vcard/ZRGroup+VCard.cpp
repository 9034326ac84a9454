// The cards of a group, with those of the groups in it.
#include "core/ZRGroup.h"
#include "core/ZRPerson.h"
#include "interchange/vcard/VCardText.h"

#include <algorithm>
#include <functional>
#include <vector>

namespace {

using Append = std::function<void(const ZRPerson& person, std::string& cards)>;

/// `way` is the groups from the first one down to this one.
void appendCards(
    const ZRGroup& group, std::vector<const ZRGroup*>& way, const Append& append, std::string& cards)
{
    const auto isOnWay = [&](const ZRGroup* known) { return known->isEqual(group); };
    if (std::ranges::any_of(way, isOnWay))
        return;
    way.push_back(&group);
    for (const auto& member : group.members())
        if (const auto person = platform::refCast<ZRPerson>(member))
            append(*person, cards);
    for (const auto& subgroup : group.subgroups())
        if (const auto below = platform::refCast<ZRGroup>(subgroup))
            appendCards(*below, way, append, cards);
    way.pop_back();
}

std::string cardsOf(const ZRGroup& group, const Append& append)
{
    std::vector<const ZRGroup*> way;
    std::string cards;
    appendCards(group, way, append, cards);
    return cards;
}

} // namespace

std::string ZRGroup::_vCardRepresentationAsStringUsingImageCache(const platform::Value& imageCache) const
{
    return cardsOf(*this, [&](const ZRPerson& person, std::string& cards) {
        cards += person._vCardRepresentationAsStringUsingImageCache(imageCache);
    });
}

std::string ZRGroup::_vCardRepresentationAsString() const
{
    return _vCardRepresentationAsStringUsingImageCache(platform::Value());
}

std::optional<std::string> ZRGroup::_vCardRepresentation() const
{
    return zrVCardDataRepresenation(_vCardRepresentationAsString());
}

std::string ZRGroup::_21vCardRepresentationAsData() const
{
    return cardsOf(*this,
        [](const ZRPerson& person, std::string& cards) { cards += person._21vCardRepresentationAsData(); });
}
