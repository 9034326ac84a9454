// How any text becomes the name of a file.
#include "platform/files/PlainFileName.h"

#include <cstdint>
#include <cstdio>

namespace platform {

namespace {

constexpr std::size_t kLongestName = 60;
/// A dash and sixteen digits.
constexpr std::size_t kSumLength = 17;

bool isPlain(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z')
        || (character >= '0' && character <= '9') || character == '.' || character == '-' || character == '_';
}

/// FNV-1a: two names that a user really has do not meet.
std::string sumOf(std::string_view text)
{
    std::uint64_t sum = 14695981039346656037U;
    for (const char byte : text)
        sum = (sum ^ static_cast<unsigned char>(byte)) * 1099511628211U;
    char digits[kSumLength + 1];
    std::snprintf(digits, sizeof digits, "-%016llx", static_cast<unsigned long long>(sum));
    return digits;
}

} // namespace

std::string plainFileName(std::string_view text)
{
    std::string name;
    for (const char character : text)
        name += isPlain(character) ? character : '_';
    if (name == text && !name.empty() && name.front() != '.' && name.size() <= kLongestName)
        return name;
    if (!name.empty() && name.front() == '.')
        name.front() = '_';
    return name.substr(0, kLongestName - kSumLength) + sumOf(text);
}

} // namespace platform
