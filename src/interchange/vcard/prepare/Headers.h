// What stands in front of the values of lines: read once, however many lines and cards repeat it.
#pragma once

#include "interchange/vcard/prepare/Cards.h"
#include "interchange/vcard/prepare/Map.h"
#include "interchange/vcard/prepare/Property.h"
#include "interchange/vcard/prepare/TextHash.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vcard::prepare {

/// The rank of an entry that is not preferred; a lower one stands before it.
inline constexpr std::uint8_t kNoRank = 255;

/// What the part of a line up to its colon says.
struct Header {
    /// Its value is empty: that is what differs between lines of one header.
    Property property;
    /// Whether the name, and the group, is one that a reader would take.
    bool isNamed = false, hasGroup = false;
    /// What is done with such a property in cards of the version at hand, or null.
    const Row* row = nullptr;
    std::string_view altid;
    /// Bare types and TYPE lists alike as TYPE lists of unquoted words: ";TYPE=WORK,VOICE".
    std::string types;
    std::vector<std::string_view> unreadableTypes;
    /// The name as it was written, the types and the colon.
    std::string canonical;
    /// How preferred an entry is: by the parameter PREF alone, and by the type of that name too.
    std::uint8_t rankOfParameter = kNoRank, rank = kNoRank;
    /// As it was written, with the colon.
    std::string_view text;
    /// The header that came behind this one the last time, or null.
    Header* follower = nullptr;

    void read(std::string_view written, Version version);

private:
    void readParameters();
    void readTypes(std::string_view list);
    void readType(std::string_view type, bool& open);
};

/// Reads headers, and remembers those it has read: a file has thousands of lines and a handful of headers.
///
/// Ownership: owns what it remembers, which is bounded; what it does not, borrows the line.
/// Threads:   one thread at a time.
/// Errors:    none; what cannot be read is in the header.
class Headers {
public:
    static constexpr std::size_t kMostRemembered = 512;
    static constexpr std::size_t kLongestRemembered = 200;

    /// Until the next card headers are those of this version.
    void beginCard(Version version);

    /// The header of a line, or null where there is no colon. The words in the answer are valid until the
    /// next card; the answer itself until the next call.
    const Header* of(std::string_view line);

private:
    using Known = std::unordered_map<std::string, Header, TextHash, std::equal_to<>>;

    Header* remembered(std::string_view text);

    Version _version = Version::missing;
    /// The header of the line before, if it is remembered: cards of a file have their lines in one order.
    Header* _last = nullptr;
    /// By version, since a file may have cards of several.
    std::array<Known, kVersions> _known;
    Header _unknown;
};

} // namespace vcard::prepare
