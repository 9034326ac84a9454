// A person as a vCard: what the class itself offers, and what the store asks for.
#include "core/ZRLog.h"
#include "core/ZRPerson.h"
#include "interchange/vcard/Card40.h"
#include "interchange/vcard/VCard40.h"
#include "interchange/vcard/VCardCharsets.h"
#include "interchange/vcard/VCardText.h"
#include "interchange/vcard/ZRPersonVCardAdditions.h"
#include "platform/run/Log.h"
#include "store/ZRRoster.h"
#include "store/ZRServices.h"

#include <fmt/format.h>

#include <exception>

namespace {

/// Room for most cards without a photo.
constexpr std::size_t kUsualCard = 1024;

/// A card that fails half-way ends there.
template <class Card, class Write>
void append(const ZRPerson& person, std::string& to, Write&& write)
{
    try {
        locked(*person.nts_Roster(), ZRAccess::read, [&]() ZR_NTS {
            Card card(person, to);
            write(card);
        });
    } catch (const std::exception& failure) {
        platform::log(fmt::format("-[ZRPerson vCardRepresentation]: {}", failure.what()));
    }
}

ZRVCardOptions optionsOfPreferences()
{
    return (ZRPerson::includeNotesInVCards() ? kZRVCardWithNote : 0)
        | (ZRPerson::includePhotosInVCards() ? kZRVCardWithPhoto : 0);
}

/// It is a file: to be read before the lock is taken.
platform::Value photoOf(const ZRPerson& person, ZRVCardOptions options)
{
    return options & kZRVCardWithPhoto ? person.imageData() : platform::Value();
}

} // namespace

void ZRPerson::_appendVCardRepresentation(std::string& cards, ZRVCardOptions options) const
{
    const platform::Value photo = photoOf(*this, options);
    append<ZRPersonVCardAdditions>(
        *this, cards, [&](ZRPersonVCardAdditions& card) ZR_NTS { card.writeVersion30(options, photo); });
}

std::string ZRPerson::_vCardRepresentationAsStringUsingImageCache(
    const platform::Value&, ZRVCardOptions options) const
{
    std::string card;
    card.reserve(kUsualCard);
    _appendVCardRepresentation(card, options);
    return card;
}

std::string ZRPerson::_vCardRepresentationAsStringUsingImageCache(const platform::Value& imageCache) const
{
    return _vCardRepresentationAsStringUsingImageCache(imageCache, optionsOfPreferences());
}

std::string ZRPerson::_vCardRepresentationAsString() const
{
    return _vCardRepresentationAsStringUsingImageCache(platform::Value());
}

std::optional<std::string> ZRPerson::vCardRepresentation() const
{
    return ZRRoster::nts_hasSharedInstance() ? zrVCardDataRepresenation(_vCardRepresentationAsString())
                                             : std::nullopt;
}

void ZRPerson::_append21vCardRepresentation(std::string& cards, ZRVCardOptions options) const
{
    const std::string charset = zrPreferred21Charset();
    append<ZRPersonVCardAdditions>(
        *this, cards, [&](ZRPersonVCardAdditions& card) ZR_NTS { card.writeVersion21(options, charset); });
}

std::string ZRPerson::_21vCardRepresentationAsData(ZRVCardOptions options) const
{
    std::string card;
    _append21vCardRepresentation(card, options);
    return card;
}

std::string ZRPerson::_21vCardRepresentationAsData() const
{
    return _21vCardRepresentationAsData(optionsOfPreferences());
}

void zrAppendVCard40(const ZRPerson& person, std::string& cards, ZRVCardOptions options)
{
    const platform::Value photo = photoOf(person, options);
    append<vcard::Card40>(person, cards, [&](vcard::Card40& card) ZR_NTS { card.write(options, photo); });
}

namespace {

const bool isRegistered = [] {
    ZRServices::registered().cardData = [](ZRRecord& record) {
        const auto* const person = dynamic_cast<const ZRPerson*>(&record);
        return person ? person->vCardRepresentation().value_or(std::string()) : std::string();
    };
    return true;
}();

} // namespace
