// How codes of countries are remembered.
#include "interchange/vcard/prepare/Countries.h"

#include "platform/text/Regions.h"

namespace vcard::prepare {

std::string_view Countries::codeOf(std::string_view name)
{
    if (const auto at = _known.find(name); at != _known.end())
        return at->second;
    if (_known.size() == kMostRemembered)
        _known.clear();
    return _known.emplace(name, platform::regionCodeForName(name)).first->second;
}

} // namespace vcard::prepare
