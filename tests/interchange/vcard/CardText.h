// What tests of the reader compare: cards, strings and values as short texts.
#pragma once

#include "core/ZRMultiValue.h"
#include "interchange/vcard/ZRVCardDictionaryValueSetter.h"
#include "interchange/vcard/ZRVCardLexer.h"
#include "interchange/vcard/ZRVCardParser.h"
#include "platform/text/Utf.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace cardtext {

/// "Work" for the label "_$!<Work>!$_"; other labels as they are.
inline std::string plainLabel(const std::string& label)
{
    const bool marked = label.starts_with("_$!<") && label.ends_with(">!$_");
    return marked ? label.substr(4, label.size() - 8) : label;
}

/// A value in braces where it has parts; the entries of a multi-value as "label=value".
inline std::string textOf(const platform::Value& value)
{
    std::string text;
    const auto add = [&](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
    if (const auto* entries = value.as<ZRMultiValue>()) {
        for (ZRIndex at = 0; at < entries->count(); ++at)
            add(plainLabel(entries->labelAtIndex(at)) + "=" + textOf(entries->valueAtIndex(at)));
        return "[" + text + "]";
    }
    if (const auto* dictionary = value.asDictionary()) {
        for (const auto& [key, part] : dictionary->entries())
            add(key + "=" + textOf(part));
        return "{" + text + "}";
    }
    return value.description();
}

/// A setter that also keeps what a dictionary does not: the picture and the temporary cache.
class Setter : public ZRVCardValueSetter {
public:
    void setValue(platform::Value value, std::string_view property) override
    {
        _dictionary.setValue(std::move(value), property);
    }
    platform::Value valueForProperty(std::string_view property) const override
    {
        return _dictionary.valueForProperty(property);
    }
    void setImageData(platform::Value data) override { image = std::move(data); }
    std::optional<std::string> fullName() const override { return name; }
    void setValueInTemporaryCache(platform::Value value, std::string_view property) override
    {
        temporary = std::string(property) + "=" + textOf(value);
    }

    /// "Property=value" in lines, sorted; a multi-value without its outer dictionary.
    std::string text() const
    {
        std::string lines;
        const platform::Value dictionary = _dictionary.dictionaryRep();
        for (const auto& [property, value] : dictionary.asDictionary()->entries()) {
            const auto& entries = value[property];
            lines += (lines.empty() ? "" : "\n") + property + "="
                + textOf(entries.as<ZRMultiValue>() ? entries : value);
        }
        return lines;
    }

    std::optional<std::string> name = "Somebody";
    platform::Value image;
    std::string temporary;

private:
    ZRVCardDictionaryValueSetter _dictionary;
};

/// A card of version 3.0 around lines that end in "\n".
inline std::string card(std::string_view lines)
{
    std::string text = "BEGIN:VCARD\nVERSION:3.0\n" + std::string(lines) + "END:VCARD\n";
    for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2)
        text.replace(at, 1, "\r\n");
    return text;
}

/// Reads the first card of the data into `setter`.
inline bool readInto(ZRVCardValueSetter& setter, std::string_view data,
    const VCardReaderContext& context = VCardReaderContext::standard())
{
    return ZRVCardParser::initWithData(data, context)->importToValueSetter(setter);
}

/// What the first card of the data holds, or "(refused: why)".
inline std::string read(
    std::string_view data, const VCardReaderContext& context = VCardReaderContext::standard())
{
    const auto parser = ZRVCardParser::initWithData(data, context);
    if (!parser)
        return "(no parser)";
    Setter setter;
    return parser->importToValueSetter(setter) ? setter.text() : "(refused: " + parser->failureReason() + ")";
}

/// UTF-8 text as UTF-16 with a byte order mark.
inline std::string utf16(std::string_view text, platform::ByteOrder order)
{
    const bool little = order == platform::ByteOrder::little;
    return std::string(little ? "\xFF\xFE" : "\xFE\xFF") + platform::toUTF16Bytes(text, order);
}

/// Enough to make a lexer of any text behind it: eleven tokens.
inline constexpr std::string_view kLeader = ";;;;;;;;;;;";

/// A lexer at the start of a text, which is read as bytes or as UTF-16; with the data that it borrows.
class TextLexer {
public:
    explicit TextLexer(std::string_view text, std::optional<platform::ByteOrder> order)
        : _data(std::string(kLeader) + std::string(text))
    {
        if (order)
            _data = utf16(_data, *order);
        _lexer = ZRVCardLexer::initWithData(_data);
        for (std::size_t token = 0; token < kLeader.size(); ++token)
            _lexer->nextTokenPeak(false);
    }
    TextLexer(const TextLexer&) = delete;
    TextLexer& operator=(const TextLexer&) = delete;

    ZRVCardLexer& operator*() const { return *_lexer; }
    ZRVCardLexer* operator->() const { return _lexer.get(); }

private:
    std::string _data;
    std::unique_ptr<ZRVCardLexer> _lexer;
};

inline TextLexer lexerOn(std::string_view text, std::optional<platform::ByteOrder> order = std::nullopt)
{
    return TextLexer(text, order);
}

} // namespace cardtext
