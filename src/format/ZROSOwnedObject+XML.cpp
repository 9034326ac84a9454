// A part of a card as XML, for printing.
#include "format/Postnet.h"

#include "objectstore/Model.h"
#include "store/ZROSRecord.h"

#include <fmt/format.h>

namespace {

/// What the barcode says, whatever the part is.
constexpr std::string_view kSampleDigits = "012345678905";

std::string escaped(std::string_view text)
{
    std::string safe;
    for (const char c : text) {
        if (c == '&')
            safe += "&amp;";
        else if (c == '<')
            safe += "&lt;";
        else if (c == '>')
            safe += "&gt;";
        else if (static_cast<unsigned char>(c) >= 0x20 || c == '\n' || c == '\t')
            safe += c;
    }
    return safe;
}

} // namespace

std::string ZROSOwnedObject::barcodeXML()
{
    std::string bars = "<long/>";
    for (const char digit : kSampleDigits)
        for (const char bar : BitsForDigit(digit).value_or(""))
            bars += bar == '1' ? "<long/>" : "<short/>";
    return "<barcode>" + bars + "<long/></barcode>";
}

std::string ZROSOwnedObject::XMLRepresentation()
{
    std::string parts;
    for (const objectstore::Slot* slot : entity().fields())
        if (slot->kind == objectstore::SlotKind::attribute
            && slot->type == objectstore::AttributeType::string)
            if (const auto value = text(*slot); !value.empty())
                parts += fmt::format("<{0}>{1}</{0}>", slot->key, escaped(value));
    return fmt::format("<{0}>{1}{2}</{0}>", entity().name(), parts, barcodeXML());
}
