// What labels, messaging services, kinds of relatives and pictures are called in a vCard 4.0.
#pragma once

#include <string_view>

namespace vcard {

/// The TYPE of an entry with this label, in lower case; empty where none says the same.
std::string_view typeOfLabel40(std::string_view label);
/// Of a telephone, which has more of them.
std::string_view typeOfPhoneLabel40(std::string_view label);

/// What somebody is to the person (RFC 6350 §6.6.6).
struct Relation40 {
    /// Empty where there is none.
    std::string_view type;
    /// Whether a reader of the type knows the label.
    bool saysAll = false;
};
Relation40 relationOfLabel40(std::string_view label);

/// The scheme of addresses in the service of this property, such as "xmpp" (RFC 6350 §6.4.3).
std::string_view schemeOfService40(std::string_view property);

/// The media type of a picture, from how its bytes begin.
std::string_view mediaTypeOfPicture(std::string_view bytes);

} // namespace vcard
