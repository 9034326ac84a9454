// What stands on the label, and where it goes.
#include "app/ZRActionAddressCopyMailingLabel.h"

#include "core/ZRConstants.h"
#include "core/ZRFrameworkBundle.h"
#include "core/ZRMultiValue.h"
#include "core/ZRPerson.h"
#include "platform/files/Pasteboard.h"
#include "platform/value/AttributedString.h"
#include "store/ZRRoster.h"

#include <algorithm>

using platform::Value;

namespace {

std::string lineOf(std::string_view text) { return text.empty() ? std::string() : std::string(text) + "\n"; }

std::string mailingLabel(const ZRPerson& person, const Value& address, std::string_view label)
{
    std::string text = lineOf(person._fullName());
    if (label != zr::kZRAddressHomeLabel)
        text += lineOf(person.valueForProperty(zr::kZROrganizationProperty).asText());
    text += person.roster()->formattedAddressFromDictionary(address)->string();
    std::erase_if(text, [](char c) { return c == '\x0E' || c == '\x0F'; });
    return text;
}

} // namespace

std::string ZRActionAddressCopyMailingLabel::actionProperty() const
{
    return std::string(zr::kZRAddressProperty);
}

std::string ZRActionAddressCopyMailingLabel::titleForPerson(const ZRPerson&, std::string_view) const
{
    return ZRFrameworkBundle().localizedString("ACTION_ADDRESS_COPY_MAILING_LABEL", "ZRTextActions");
}

bool ZRActionAddressCopyMailingLabel::shouldEnableActionForPerson(const ZRPerson&, std::string_view) const
{
    return true;
}

void ZRActionAddressCopyMailingLabel::performActionForPerson(
    const ZRPerson& person, std::string_view identifier) const
{
    const Value values = person.valueForProperty(zr::kZRAddressProperty);
    const auto* const addresses = values.as<ZRMultiValue>();
    const Value address = addresses ? addresses->valueForIdentifier(identifier) : Value();
    if (address.isNothing())
        return;
    const auto label = addresses->labelForIdentifier(identifier).value_or("");
    const auto pasteboard = platform::Pasteboard::general();
    pasteboard->clearContents();
    pasteboard->setValue(Value(mailingLabel(person, address, label)), platform::kPlainTextPasteboardType);
}
