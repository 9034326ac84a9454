// The table of bars.
#include "format/Postnet.h"

namespace {

/// Five bars a digit, of which two are long.
constexpr std::string_view __encodingKey = "11000000110010100110010010101001100100011001010100";
constexpr std::size_t kBars = 5;
static_assert(__encodingKey.size() == 10 * kBars);

} // namespace

std::optional<std::string_view> BitsForDigit(char digit)
{
    if (digit < '0' || digit > '9')
        return std::nullopt;
    return __encodingKey.substr(static_cast<std::size_t>(digit - '0') * kBars, kBars);
}
