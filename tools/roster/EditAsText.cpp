// The way of a card through an editor, and what becomes of the text when that goes wrong.
#include "EditAsText.h"

#include "CardMerge.h"
#include "TextEditor.h"

#include "core/ZRPerson.h"

#include <fmt/format.h>

namespace {

bool isBlank(const std::string& text) { return text.find_first_not_of(" \t\r\n") == text.npos; }

bool applyText(
    ZRPerson& person, const std::string& given, const std::string& edited, const CardProperties& stored)
{
    const CardProperties after = propertiesOfText(edited, given);
    if (!applyDifferences(propertiesOfGivenText(given), after, stored, person))
        return false;
    save(*person.nts_Roster());
    return true;
}

} // namespace

bool editAsText(ZRPerson& person, const std::string& text, std::string_view what)
{
    if (!hasEditor())
        throw Failure(exitStatus::usage, fmt::format("{}, or name an editor in VISUAL or EDITOR", what));
    const CardProperties stored = propertiesOf(person);
    EditedFile file(text);
    const std::string edited = file.edit();
    if (edited == text || isBlank(edited))
        return false;
    try {
        return applyText(person, text, edited, stored);
    } catch (const std::exception& error) {
        const auto* const failure = dynamic_cast<const Failure*>(&error);
        throw Failure(failure ? failure->status : exitStatus::noStore,
            fmt::format("{}; your text is in {}", error.what(), file.keep()));
    }
}
