// How a raw card becomes a canonical one, line by line.
#pragma once

#include "interchange/vcard/prepare/Cards.h"
#include "interchange/vcard/prepare/Carry.h"
#include "interchange/vcard/prepare/Charset.h"
#include "interchange/vcard/prepare/Property.h"
#include "interchange/vcard/prepare/Report.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vcard::prepare {

/// Writes canonical cards and tells the report what it changed beyond spelling.
///
/// Nothing that carries text is left out in silence: a property has a line, or is in the note, or in the
/// report. The note comes last, since later lines may add to it.
///
/// Ownership: borrows charsets and report; keeps buffers between cards.
/// Threads:   one thread at a time.
/// Errors:    none; what cannot be read is told.
class CardWriter {
public:
    CardWriter(Charsets& charsets, Report& report);

    /// Writes the card into `out`, whose content is replaced. False when no line of it can be kept.
    bool write(const RawCard& card, std::size_t number, std::string& out);

private:
    struct Span {
        std::size_t start = 0;
        std::size_t length = 0;
    };

    void writeLine(std::string_view line);
    void writeKept(const Row& row);
    void writeDay(const Row& row);
    void writePicture(const Row& row);
    void writeLabel();
    void addToNote();
    void carryUnknown();
    void carryUnreadable(std::string_view line);

    std::string_view value();
    std::string decoded(std::string_view bytes, std::string_view charset);
    Escapes escapes() const;
    void appendHeader(std::string_view name, bool base64 = false);
    void appendTypes();
    void appendType(std::string_view type, bool& open);
    bool keepLine(const Row& row, std::size_t lineStart, std::size_t valueStart, Finding ifRepeated);
    void carry(std::string_view name, std::string_view canonical, Finding finding);
    void endLine();
    static void join(std::string& text, std::string_view more);
    void tell(Finding finding, std::string_view subject);
    std::string_view written(std::size_t start) const { return std::string_view(*_out).substr(start); }

    Charsets& _charsets;
    Report& _report;
    const RawCard* _card = nullptr;
    std::size_t _number = 0;
    std::size_t _line = 0;
    std::string* _out = nullptr;
    Property _property;
    std::string _text;
    /// The value of NOTE lines, and what has no line of its own; both canonical.
    std::string _note;
    std::string _carried;
    /// Where the value of each row's first line stands in the output; only rows with room for one have it.
    std::vector<Span> _first;
};

} // namespace vcard::prepare
