// Which messaging service an address belongs to, and what the record has for it.
#pragma once

#include "interchange/vcard/prepare/Map.h"

#include <string_view>

namespace vcard::prepare {

/// One service, by the scheme of its addresses (RFC 4770).
struct Service {
    std::string_view scheme;
    /// The property of its addresses, or empty: then they are URLs.
    std::string_view property;
    Entries entries = Entries::urls;
    /// How its entries are labelled; empty where home and work say more.
    std::string_view label;
};

/// The service of a scheme in any case, or null.
const Service* serviceOf(std::string_view scheme);

/// The scheme in front of the first ":", or empty where the value is no address of that form.
std::string_view schemeOf(std::string_view value);

} // namespace vcard::prepare
