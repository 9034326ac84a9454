// Does a text hold another, byte by byte?
#include "objectstore/TextSearch.h"

#include <cstddef>
#include <cstring>

namespace objectstore {

namespace {

/// Bytes that are looked at together: a loop of fixed length without a way out, which the compiler turns into
/// vector instructions.
constexpr std::size_t kBlock = 32;

bool blockHoldsPair(const char* text, char first, char second)
{
    unsigned char found = 0;
    for (std::size_t i = 0; i < kBlock; ++i)
        found = static_cast<unsigned char>(
            found | static_cast<unsigned char>((text[i] == first) & (text[i + 1] == second)));
    return found != 0;
}

bool holdsPair(std::string_view text, char first, char second)
{
    std::size_t at = 0;
    for (; at + kBlock < text.size(); at += kBlock)
        if (blockHoldsPair(text.data() + at, first, second))
            return true;
    for (; at + 1 < text.size(); ++at)
        if (text[at] == first && text[at + 1] == second)
            return true;
    return false;
}

} // namespace

bool holds(std::string_view text, std::string_view part)
{
    if (part.empty() || text.size() < part.size())
        return part.empty();
    if (part.size() == 2)
        return holdsPair(text, part[0], part[1]);
    return memmem(text.data(), text.size(), part.data(), part.size()) != nullptr;
}

} // namespace objectstore
