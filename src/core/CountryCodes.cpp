// Which country is meant by a code that is none.
#include "core/CountryCodes.h"

#include <utility>

namespace {

constexpr std::pair<std::string_view, std::string_view> kCorrections[] = {
    {"cs", "cz"}, {"ja", "jp"}, {"uk", "gb"}};

} // namespace

std::string_view correctedCountryCode(std::string_view code)
{
    for (const auto& [written, meant] : kCorrections)
        if (code == written)
            return meant;
    return code;
}
