// A person from a card: what the class itself offers, and what the store asks for.
#include "core/ZRPerson.h"
#include "interchange/vcard/RosterReaderContext.h"
#include "interchange/vcard/ZRVCardParser.h"
#include "store/ZRRoster.h"
#include "store/ZRServices.h"

using platform::Ref;

Ref<ZRPerson> ZRPerson::initWithVCardRepresentation(std::string_view data)
{
    return initWithVCardRepresentation(data, ZRRoster::sharedRoster());
}

Ref<ZRPerson> ZRPerson::initWithVCardRepresentation(std::string_view data, Ref<ZRRoster> roster)
{
    if (!roster || !ZRRoster::nts_hasSharedInstance())
        return nullptr;
    const RosterReaderContext surroundings(*roster);
    const auto parser = ZRVCardParser::initWithData(data, surroundings);
    std::size_t length = 0;
    return parser ? parser->nextPersonWithLength(length, *roster) : nullptr;
}

namespace {

/// The store opens rosters that want their first cards while the shared one is still being made, so it does
/// not ask whether that is there.
const bool isRegistered = [] {
    ZRServices::registered().readCard = [](std::string_view data, Ref<ZRRoster> roster) -> Ref<ZRRecord> {
        const RosterReaderContext surroundings(*roster);
        const auto parser = ZRVCardParser::initWithData(data, surroundings);
        std::size_t length = 0;
        return parser ? parser->nextPersonWithLength(length, *roster) : nullptr;
    };
    return true;
}();

} // namespace
