// What a message between two ports looks like on the way.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace platform {

/// Stands before the data of a message and of a reply, in the byte order of the machine that both are on.
struct PortFrame {
    static constexpr std::uint32_t kMagic = 0x3150525a;

    std::uint32_t magic = kMagic;
    std::uint32_t message = 0;
    std::uint32_t length = 0;
    std::uint32_t wantsReply = 0;

    std::string with(std::string_view data) const
    {
        return std::string(reinterpret_cast<const char*>(this), sizeof *this).append(data);
    }
    /// From at least `sizeof(PortFrame)` bytes.
    static PortFrame of(std::string_view bytes)
    {
        PortFrame frame;
        std::memcpy(&frame, bytes.data(), sizeof frame);
        return frame;
    }
    bool isSound(std::size_t largest) const { return magic == kMagic && length <= largest; }
};

} // namespace platform
