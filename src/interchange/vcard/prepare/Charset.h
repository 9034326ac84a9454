// Which character set a card's bytes are in.
#pragma once

#include "platform/text/Encoding.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vcard::prepare {

/// Finds the character set of each card of one file, and turns values into UTF-8.
///
/// The set of a card is UTF-8 where its bytes are that; else a set that a CHARSET parameter names in the
/// card, then in the file; then the preference, then windows-1252: the first in which all of the card's
/// bytes have a meaning. Latin 1, in which every byte has one, stands behind them all.
///
/// Ownership: borrows the file's bytes, and the card's until the next one begins.
/// Threads:   one thread at a time.
/// Errors:    none; an unknown name is as none.
class Charsets {
public:
    /// `preferred` is what people of this language used to write; 0 for none.
    Charsets(std::string_view file, TextEncoding preferred) : _file(file), _preferred(preferred) { }

    /// Chooses the encoding for the lines of a card.
    void beginCard(std::string_view card);

    TextEncoding encoding() const { return _encoding; }

    /// The encoding that some of the card was read in though no CHARSET named it, or 0.
    TextEncoding guess() const { return _guess; }

    /// A value of the card as UTF-8. The line's own CHARSET, if any, wins where the value converts
    /// strictly. A value that was seven-bit text in the card may hold anything once decoded: if the card's
    /// encoding does not fit it, one is looked for as for a card.
    std::string text(std::string_view bytes, std::string_view lineCharset);

private:
    TextEncoding firstFitting(std::string_view bytes);

    std::string_view _file;
    std::string_view _card;
    TextEncoding _preferred;
    TextEncoding _encoding = platform::kUTF8Encoding;
    TextEncoding _guess = 0;
    /// What CHARSET parameters name, each once, without ASCII and UTF-8; looked for when first needed.
    std::optional<std::vector<TextEncoding>> _namedInCard;
    std::optional<std::vector<TextEncoding>> _namedInFile;
};

} // namespace vcard::prepare
