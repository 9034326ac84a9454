// How bytes become Base64.
#include "platform/text/Escape.h"

#include "platform/value/Base64.h"

namespace platform {

std::string encodeBase64(std::string_view bytes) { return propertylist::base64FromBytes(bytes); }

} // namespace platform
