// A whole file through the preparation, as tests like to look at it.
#pragma once

#include "interchange/vcard/prepare/Preparation.h"

#include <string>
#include <string_view>
#include <vector>

namespace vcard::prepare {

struct PreparedFile {
    std::vector<CanonicalCard> cards;
    std::string report;

    /// The canonical text of all cards that were not refused.
    std::string text() const
    {
        std::string all;
        for (const auto& card : cards)
            all += card.text;
        return all;
    }
};

inline PreparedFile prepared(std::string_view bytes, TextEncoding preferred = 0)
{
    // No byte stands behind the last one, as at the end of a mapped file: a look beyond it is found out.
    const std::vector<char> mapped(bytes.begin(), bytes.end());
    Preparation preparation({mapped.data(), mapped.size()}, {"f", preferred});
    PreparedFile file;
    for (CanonicalCard card; preparation.next(card);)
        file.cards.push_back(card);
    file.report = preparation.report().text();
    return file;
}

/// The lines of one card between BEGIN and END.
inline std::string card(std::string_view version, std::string_view lines)
{
    return "BEGIN:VCARD\r\nVERSION:" + std::string(version) + "\r\n" + std::string(lines) + "END:VCARD\r\n";
}

} // namespace vcard::prepare
