// How folds are made, character by character, from a table that fills itself.
#include "platform/text/Fold.h"

#include "platform/text/FoldTable.h"
#include "platform/text/Utf.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>

namespace platform {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

// Folds of 256 characters in a row. A fold of up to seven bytes stands in its cell; a longer one stands in
// `longFolds`, and its cell holds the place and length.
struct Page {
    struct Cell {
        std::uint8_t length;
        char bytes[7];
    };
    static constexpr std::uint8_t kLong = 0xFF;
    struct Place {
        std::uint32_t start;
        std::uint16_t length;
    };

    void set(unsigned index, std::string_view fold);
    std::string_view at(unsigned index) const;

    Cell cells[256];
    std::string longFolds;
};

void Page::set(unsigned index, std::string_view fold)
{
    Cell& cell = cells[index];
    if (fold.size() <= sizeof cell.bytes) {
        cell.length = static_cast<std::uint8_t>(fold.size());
        std::copy(fold.begin(), fold.end(), cell.bytes);
        return;
    }
    cell.length = kLong;
    const Place place{static_cast<std::uint32_t>(longFolds.size()), static_cast<std::uint16_t>(fold.size())};
    static_assert(sizeof place.start + sizeof place.length <= sizeof cell.bytes);
    std::memcpy(cell.bytes, &place.start, sizeof place.start);
    std::memcpy(cell.bytes + sizeof place.start, &place.length, sizeof place.length);
    longFolds += fold;
}

std::string_view Page::at(unsigned index) const
{
    const Cell& cell = cells[index];
    if (cell.length != kLong)
        return {cell.bytes, cell.length};
    Place place;
    std::memcpy(&place.start, cell.bytes, sizeof place.start);
    std::memcpy(&place.length, cell.bytes + sizeof place.start, sizeof place.length);
    return std::string_view(longFolds).substr(place.start, place.length);
}

icu::UnicodeString decomposed(const icu::UnicodeString& text)
{
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* normalizer = icu::Normalizer2::getNFKDInstance(status);
    return normalizer ? normalizer->normalize(text, status) : text;
}

bool isDroppedMark(UChar32 character)
{
    constexpr UChar32 kVoicedMark = 0x3099, kHalfVoicedMark = 0x309A;
    return u_charType(character) == U_NON_SPACING_MARK && character != kVoicedMark
        && character != kHalfVoicedMark;
}

// Decomposed again after the case fold, which may bring forth composed characters and marks.
std::string makeFold(char32_t character, std::uint32_t options)
{
    icu::UnicodeString text(static_cast<UChar32>(character));
    if (options & kFoldDiacritics)
        text = decomposed(text);
    if (options & kFoldCase)
        text.foldCase(U_FOLD_CASE_DEFAULT);
    std::string fold;
    if (!(options & kFoldDiacritics))
        return text.toUTF8String(fold);
    text = decomposed(text);
    for (int32_t at = 0; at < text.length(); at = text.moveIndex32(at, 1))
        if (const UChar32 part = text.char32At(at); !isDroppedMark(part))
            appendUTF8(fold, static_cast<char32_t>(part));
    return fold;
}

std::unique_ptr<const Page> makePage(char32_t first, std::uint32_t options)
{
    auto page = std::make_unique<Page>();
    for (unsigned index = 0; index < 256; ++index)
        if (const char32_t character = first + index; !U_IS_SURROGATE(character))
            page->set(index, makeFold(character, options));
    return page;
}

// Pages are made at first use and never freed; of two threads that make the same one, one keeps its work.
const Page& pageOf(char32_t character, std::uint32_t options)
{
    static std::atomic<const Page*> pages[4][0x1100];
    auto& slot = pages[options][character >> 8];
    if (const Page* page = slot.load(std::memory_order_acquire))
        return *page;
    auto made = makePage(character & ~char32_t{0xFF}, options);
    const Page* present = nullptr;
    if (slot.compare_exchange_strong(present, made.get(), std::memory_order_acq_rel))
        return *made.release();
    return *present;
}

std::string foldASCII(std::string_view text, std::uint32_t options)
{
    std::string fold(text);
    if (options & kFoldCase)
        for (char& byte : fold)
            byte = smallLetter(byte);
    return fold;
}

} // namespace

std::string_view foldOfCharacter(char32_t character, std::uint32_t foldOptions)
{
    if (character > 0x10FFFF || U_IS_SURROGATE(character))
        character = kReplacement;
    return pageOf(character, foldOptions & kFoldCaseAndDiacritics).at(character & 0xFF);
}

std::string transformed(std::string_view text, std::uint32_t foldOptions)
{
    const std::uint32_t options = foldOptions & kFoldCaseAndDiacritics;
    if (isASCII(text))
        return foldASCII(text, options);
    std::string fold;
    fold.reserve(text.size() + text.size() / 2);
    for (std::size_t at = 0; at < text.size();) {
        if (!(text[at] & 0x80)) {
            fold.push_back(options & kFoldCase ? smallLetter(text[at]) : text[at]);
            ++at;
            continue;
        }
        fold += foldOfCharacter(nextCharacter(text, at), options);
    }
    return fold;
}

std::string foldCase(std::string_view text) { return transformed(text, kFoldCase); }

std::string foldCaseAndDiacritics(std::string_view text) { return transformed(text, kFoldCaseAndDiacritics); }

std::string incremented(std::string_view text)
{
    if (text.empty())
        return {};
    const std::size_t start = startOfLastCharacter(text);
    std::size_t end = start;
    const char32_t character = nextCharacter(text, end);
    const char32_t last = character == kIllFormed ? kReplacement : character;
    std::string bound(text.substr(0, start));
    const bool isHighest = last == 0xFFFF || last == 0x10FFFF;
    const char32_t next = isHighest ? last : last == 0xD7FF ? 0xE000 : last + 1;
    for (int count = isHighest ? 16 : 1; count > 0; --count)
        appendUTF8(bound, next);
    return bound;
}

} // namespace platform
