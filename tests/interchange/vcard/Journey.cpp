// How a person goes out as a vCard and comes back.
#include "Journey.h"

#include "interchange/vcard/RosterReaderContext.h"
#include "interchange/vcard/VCard40.h"
#include "interchange/vcard/ZRVCardParser.h"
#include "interchange/vcard/prepare/Preparation.h"

namespace test {

std::string written(const ZRPerson& person, const Road& road)
{
    const ZRVCardOptions options =
        (road.withNote ? kZRVCardWithNote : 0) | (road.withPhoto ? kZRVCardWithPhoto : 0);
    if (road.version == Version::v21)
        return person._21vCardRepresentationAsData(options);
    std::string card;
    if (road.version == Version::v40)
        zrAppendVCard40(person, card, options);
    else
        person._appendVCardRepresentation(card, options);
    return card;
}

std::vector<platform::Ref<ZRPerson>> readAll(std::string_view data, const platform::Ref<ZRRoster>& roster)
{
    std::vector<platform::Ref<ZRPerson>> people;
    const RosterReaderContext context(*roster);
    const auto parser = ZRVCardParser::initWithData(data, context);
    std::size_t length = 0;
    while (parser && !parser->atEnd())
        if (auto person = parser->nextPersonWithLength(length, *roster))
            people.push_back(std::move(person));
    return people;
}

PlainCard comesBack(const std::string& data, const Road& road, const platform::Ref<ZRRoster>& roster)
{
    std::string text = data;
    if (road.isPrepared) {
        vcard::prepare::Preparation preparation(data, {"card", 0});
        vcard::prepare::CanonicalCard card;
        text = preparation.next(card) ? card.text : std::string();
    }
    const auto people = readAll(text, roster);
    const PlainCard card = people.size() == 1 ? PlainCard::of(*people.front()) : PlainCard();
    for (const auto& person : people) {
        person->setImageData(platform::Value());
        roster->removeRecord(person);
    }
    return card;
}

} // namespace test
