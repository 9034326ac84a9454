// What a reader of vCards must know of the user and the system around it.
#pragma once

#include "platform/text/Encoding.h"
#include "platform/value/Value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The few answers that a card does not hold itself; whoever has a roster derives from it.
///
/// It is not a place for options of one import: those choose what happens to a person that was read.
///
/// Ownership: borrowed by the parsers that were given it.
/// Threads:   called on the thread of the parser.
/// Errors:    none; what is unknown is absent.
class VCardReaderContext {
public:
    virtual ~VCardReaderContext() = default;

    /// The country of an address that names none, such as "us".
    virtual std::string defaultCountryCode() const { return "us"; }
    /// How the user writes names: 32 for the first name first, 16 for the last.
    virtual std::int64_t defaultNameOrdering() const { return 32; }
    /// The preferred character set of cards that are no vCard 3.0: the IANA name under "ZR21vCardEncoding".
    virtual std::optional<std::string> preferred21Encoding() const { return std::nullopt; }
    /// The same as a number; 0 for none, and for a name that nobody knows.
    TextEncoding preferredEncoding() const
    {
        const auto name = preferred21Encoding();
        const TextEncoding encoding = name ? platform::encodingForName(*name) : platform::invalidTextEncoding;
        return encoding == platform::invalidTextEncoding ? 0 : encoding;
    }
    /// The data of a picture that comes with the system, or absent.
    virtual platform::Value builtInPicture(std::string_view) const { return {}; }

    /// The answers above.
    static const VCardReaderContext& standard()
    {
        static const VCardReaderContext context;
        return context;
    }
};
