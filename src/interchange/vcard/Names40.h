// What labels, messaging services, kinds of relatives and pictures are called in a vCard 4.0.
#pragma once

#include <string_view>

namespace vcard {

/// What a line says of its entry's label by TYPE.
struct Type40 {
    /// In lower case; empty for none.
    std::string_view words;
    /// Whether a reader of the line knows the label.
    bool saysAll = false;
};

/// Of an e-mail address, a postal one, a calendar or a messaging address.
Type40 typeOfEntry40(std::string_view label);
Type40 typeOfPhone40(std::string_view label);
Type40 typeOfURL40(std::string_view label);
/// What somebody is to the person (RFC 6350 §6.6.6).
Type40 typeOfRelated40(std::string_view label);

/// The scheme of addresses in the service of this property, such as "xmpp" (RFC 6350 §6.4.3).
std::string_view schemeOfService40(std::string_view property);

/// The media type of a picture, from how its bytes begin.
std::string_view mediaTypeOfPicture(std::string_view bytes);

} // namespace vcard
