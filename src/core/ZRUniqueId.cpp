// Makes random identifiers fast: a card may need dozens.
#include "core/ZRUniqueId.h"

#include "core/ZRFailure.h"
#include "platform/run/ProcessMark.h"

#include <array>
#include <bit>
#include <random>

#include <sys/random.h>

namespace {

/// Random bits for names, xoshiro256** 1.0 (Blackman and Vigna). They need to be unique, not secret.
class NameGenerator {
public:
    std::uint64_t next()
    {
        const std::uint64_t result = std::rotl(_state[1] * 5, 7) * 9;
        const std::uint64_t shifted = _state[1] << 17;
        _state[2] ^= _state[0];
        _state[3] ^= _state[1];
        _state[1] ^= _state[2];
        _state[0] ^= _state[3];
        _state[2] ^= shifted;
        _state[3] = std::rotl(_state[3], 45);
        return result;
    }

    /// The generator of this thread. A forked child must not repeat what its parent goes on to give.
    static NameGenerator& ofThisThread()
    {
        thread_local NameGenerator generator;
        if (generator._process.isForeign())
            generator = NameGenerator();
        return generator;
    }

private:
    NameGenerator()
    {
        if (::getrandom(_state.data(), sizeof _state, 0) == static_cast<ssize_t>(sizeof _state))
            return;
        // A sandbox may forbid the call; the device behind this is the same source.
        std::random_device device;
        for (std::uint64_t& word : _state)
            word = std::uint64_t{device()} << 32 | device();
    }

    std::array<std::uint64_t, 4> _state;
    platform::ProcessMark _process;
};

constexpr char kHexDigits[] = "0123456789ABCDEF";

constexpr auto kHexPairs = [] {
    std::array<std::array<char, 2>, 256> pairs{};
    for (std::size_t byte = 0; byte < pairs.size(); ++byte)
        pairs[byte] = {kHexDigits[byte >> 4], kHexDigits[byte & 15]};
    return pairs;
}();

constexpr std::array<std::uint8_t, 16> kPairPlaces = {
    0, 2, 4, 6, 9, 11, 14, 16, 19, 21, 24, 26, 28, 30, 32, 34};

/// One step for each value of a byte: a CRC with the polynomial 04C11DB7, each entry with its bytes reversed.
constexpr auto kHashSteps = [] {
    std::array<std::uint32_t, 256> steps{};
    for (std::uint32_t i = 0; i < steps.size(); ++i) {
        std::uint32_t step = i << 24;
        for (int bit = 0; bit < 8; ++bit)
            step = (step & 0x80000000U) != 0 ? step << 1 ^ 0x04C11DB7U : step << 1;
        steps[i] = step >> 24 | (step >> 8 & 0xFF00U) | (step & 0xFF00U) << 8 | step << 24;
    }
    return steps;
}();

} // namespace

std::string zrUniqueString()
{
    NameGenerator& generator = NameGenerator::ofThisThread();
    auto bytes = std::bit_cast<std::array<std::uint8_t, 16>>(std::array{generator.next(), generator.next()});
    // Version 4, of the usual variant.
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);

    // Not the string itself: its own fields would be read again behind each character.
    std::array<char, kZRUniqueIdTextLength> text;
    text.fill('-');
    for (std::size_t i = 0; i < kPairPlaces.size(); ++i) {
        text[kPairPlaces[i]] = kHexPairs[bytes[i]][0];
        text[kPairPlaces[i] + 1U] = kHexPairs[bytes[i]][1];
    }
    return std::string(text.data(), text.size());
}

std::string _newUniqueIdForTable(std::optional<std::string_view> table)
{
    zrRequire(table.has_value(), "table != nil");
    std::string uniqueId = zrUniqueString();
    uniqueId += ':';
    uniqueId += *table;
    return uniqueId;
}

std::string_view zrTableOfUniqueId(std::string_view uniqueId)
{
    zrRequire(uniqueId.size() > kZRUniqueIdTextLength + 1,
        "uniqueId != nil && uniqueId is not the null marker && [uniqueId length] > 37");
    return uniqueId.substr(kZRUniqueIdTextLength + 1);
}

std::uint32_t _ZRRecordUUIDHash(std::string_view uniqueId)
{
    const auto unitAt = [&](std::size_t place) {
        return place < uniqueId.size() ? std::uint32_t{static_cast<unsigned char>(uniqueId[place])} : 0U;
    };
    const auto step = [](std::uint32_t state) { return state >> 8 ^ kHashSteps[state & 0xFF]; };

    std::uint32_t state = ~unitAt(0);
    for (std::size_t place = 1; place < kZRUniqueIdTextLength; ++place) {
        if (place == 8 || place == 13 || place == 18 || place == 23)
            continue;
        state = step(state);
        state = step(state);
        state = step(state);
        state = step(state) ^ unitAt(place);
    }
    return ~state;
}
