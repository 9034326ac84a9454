// What stands in front of the reader of cards: a file's bytes in, canonical cards and a report out.
#pragma once

#include "interchange/vcard/prepare/CanonicalCard.h"
#include "interchange/vcard/prepare/Cards.h"
#include "interchange/vcard/prepare/Charset.h"
#include "interchange/vcard/prepare/Report.h"
#include "interchange/vcard/prepare/Writer.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vcard::prepare {

/// Turns a file of cards, of any version and character set, into canonical cards, one at a time.
///
/// It is not a reader: it knows how cards are written, not what a record holds. A canonical card given
/// in comes out byte for byte. A damaged card harms no other: it comes out repaired, or with a refusal.
///
/// Ownership: borrows the bytes, which may be a mapped file; holds one card, and a copy of the whole only
///            of UTF-16 and UTF-32.
/// Threads:   one thread at a time.
/// Errors:    none is raised; what was done is in the report, refusals are also in the card.
class Preparation {
public:
    struct Options {
        /// How the report names the file.
        std::string file;
        /// Tried where neither card nor file names a set; 0 for none.
        TextEncoding preferredEncoding = 0;
        GroupWishes groups = {};
    };

    Preparation(std::string_view bytes, Options options);
    Preparation(const Preparation&) = delete;
    Preparation& operator=(const Preparation&) = delete;

    /// Puts the next card into `card`, reusing its room. False, and `card` is unchanged, behind the last.
    bool next(CanonicalCard& card);

    /// What has been found so far.
    const Report& report() const { return _report; }

    /// The bytes of the file that the cards so far took, for a progress display.
    std::size_t bytesRead() const;

private:
    std::optional<Finding> refusalOf(const RawCard& raw, std::string_view firstLine);

    std::size_t _size;
    std::optional<std::string> _converted;
    std::string_view _bytes;
    Report _report;
    Charsets _charsets;
    CardReader _reader;
    CardWriter _writer;
    RawCard _raw;
    std::size_t _number = 0;
};

} // namespace vcard::prepare
