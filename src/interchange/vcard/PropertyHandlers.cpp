// What each property of a card means: texts, names, flags and pictures.
#include "interchange/vcard/ZRVCardParser+State.h"

#include "core/PersonFlags.h"
#include "core/ZRConstants.h"
#include "interchange/vcard/DataDecoding.h"

#include <utility>

using namespace vcard;

// ---- reading a value

ZRVCardParser::State::Text ZRVCardParser::State::nextField(TokenMask stops)
{
    return lexer->nextStringInEncoding(line.encoding, line.quotedPrintable, stops, true);
}

bool ZRVCardParser::State::nextFieldFollows()
{
    if (lexer->nextTokenPeak(true) != kSemicolonToken)
        return false;
    lexer->advanceToPeakPoint();
    return true;
}

ZRVCardParser::State::Text ZRVCardParser::State::parseSingleValue()
{
    const Text value = nextField();
    nextFieldFollows();
    return value;
}

std::vector<std::string> ZRVCardParser::State::parseList()
{
    return lexer->nextArraySeperatedByToken(kSemicolon, kEndOfLine, line.encoding);
}

// ---- texts

void ZRVCardParser::State::setText(std::string_view property, Text text)
{
    if (text && !text->empty())
        setter->setValue(*text, property);
}

bool ZRVCardParser::State::storeText(std::string_view property)
{
    if (const Text text = parseSingleValue())
        setter->setValue(*text, property);
    return true;
}

bool ZRVCardParser::State::storeTextUnlessEmpty(std::string_view property)
{
    setText(property, parseSingleValue());
    return true;
}

bool ZRVCardParser::State::parseN()
{
    constexpr std::string_view properties[] = {zr::kZRLastNameProperty, zr::kZRFirstNameProperty,
        zr::kZRMiddleNameProperty, zr::kZRTitleProperty, zr::kZRSuffixProperty};
    for (const std::string_view property : properties) {
        const Text text = nextField();
        if (property == zr::kZRLastNameProperty)
            card.hasLast = text.has_value();
        if (property == zr::kZRFirstNameProperty)
            card.hasFirst = text.has_value();
        setText(property, text);
        if (!nextFieldFollows())
            break;
    }
    return true;
}

bool ZRVCardParser::State::parseFN()
{
    card.formattedName = parseSingleValue().value_or("");
    return true;
}

bool ZRVCardParser::State::parseNickname()
{
    const Text nickname = parseSingleValue();
    if (!nickname || nickname->empty())
        return false;
    setText(zr::kZRNicknameProperty, nickname);
    return true;
}

bool ZRVCardParser::State::parseOrganization()
{
    card.organization = valueOf(nextField());
    if (nextFieldFollows())
        setText(zr::kZRDepartmentProperty, nextField());
    return true;
}

bool ZRVCardParser::State::parseNote()
{
    card.notes = valueOf(parseSingleValue());
    return true;
}

bool ZRVCardParser::State::parseUID()
{
    card.uid = valueOf(parseSingleValue());
    return true;
}

bool ZRVCardParser::State::parseVersion()
{
    const Text version =
        lexer->nextStringInEncoding(platform::kASCIIEncoding, line.quotedPrintable, kFieldStops, true);
    if (!version)
        return false;
    version30 = equalInAnyCase(*version, "3.0");
    return true;
}

// ---- flags

std::int64_t ZRVCardParser::State::personFlags() const
{
    return setter->valueForProperty(zr::kZRPersonFlags).asInteger();
}

void ZRVCardParser::State::setPersonFlags(std::int64_t flags) { setter->setValue(flags, zr::kZRPersonFlags); }

bool ZRVCardParser::State::parseShowAs()
{
    const auto list = parseList();
    if (!list.empty() && equalInAnyCase(list.front(), "COMPANY"))
        setPersonFlags((personFlags() & ~kShowAsBits) | kShowAsCompany);
    return true;
}

/// Only the order that is not the user's own is written down in the flags.
bool ZRVCardParser::State::parseOrder()
{
    const auto list = parseList();
    if (list.empty())
        return true;
    const bool firstNameFirst = context.defaultNameOrdering() == personFlags::kFirstNameFirst;
    const std::string_view other = firstNameFirst ? "LAST" : "FIRST";
    std::int64_t flags = personFlags();
    if (equalInAnyCase(list.front(), other))
        flags = (flags & ~personFlags::kNameOrderingMask)
            | (firstNameFirst ? personFlags::kLastNameFirst : personFlags::kFirstNameFirst);
    setPersonFlags(flags);
    return true;
}

// ---- pictures and extensions

bool ZRVCardParser::State::parsePhoto()
{
    card.imageData = line.base64Data && setter->keepsImageData()
        ? platform::Value::data(zrDecodeBase64(*line.base64Data))
        : platform::Value();
    return true;
}

bool ZRVCardParser::State::parseBuiltInPhoto()
{
    const auto list = parseList();
    const auto picture = list.empty() ? platform::Value() : context.builtInPicture(list.front());
    if (picture.isData())
        card.imageData = picture;
    return true;
}

bool ZRVCardParser::State::parseExtension(std::string_view name)
{
    auto list = parseList();
    if (line.grouping)
        card.extensions[*line.grouping].insert_or_assign(std::string(name), std::move(list));
    return true;
}
