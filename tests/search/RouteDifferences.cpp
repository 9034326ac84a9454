// The differences with their causes, as docs/search.md tells them.
#include "search/RouteDifferences.h"

namespace test {

const std::array<DifferenceLine, 23> kDifferences{{
    {Difference::intervalEnds, "Ends of an interval",
        "The store counts both ends of an interval around or from today in; memory leaves the far end out."},
    {Difference::daysAtNoonGMT, "Noon of a day",
        "Birthdays and other dates are noon GMT in the store and noon here in memory, so that near the ends "
        "of an interval they are in for one and out for the other."},
    {Difference::yearCompanion, "Dates without their year",
        "The store compares seconds since New Year, which are a day more behind 29 February of a leap year, "
        "and counts moments of this year from New Year in GMT; memory takes both days to 1976."},
    {Difference::wholeCardText, "Whole cards",
        "The store looks for the folded text; memory for the text as typed in the folded card, so that a "
        "text "
        "with diacritics is found only with the option."},
    {Difference::cardWithoutText, "Cards without a text",
        "The store finds the empty text in them, memory nothing."},
    {Difference::wholeCardOfOthers, "Whole cards of another class",
        "Joined with a search for groups, a search of whole cards of people is false of every group in the "
        "store; memory looks at the text first, and a group has none."},
    {Difference::absentNote, "A card without a note",
        "The note is a row of its own: a negative comparison is false in the store where there is none, and "
        "true in memory."},
    {Difference::emptyText, "Empty search text",
        "The store takes it for \"no value\"; memory compares it, and every text contains it."},
    {Difference::noValue, "No search value",
        "Of a property without entries, \"contains nothing\" and \"equals nothing, in any case\" are true in "
        "the store only."},
    {Difference::labels, "Labels",
        "The store looks at all entries of the label, memory at the first; without any, \"not within\" is "
        "true in the store only."},
    {Difference::missingAddressParts, "Parts missing in an address",
        "\"Has no city\" is about all addresses in the store, and about any of them in memory."},
    {Difference::wholeAddress, "Whole addresses",
        "The store asks for each of seven parts and joins the answers, by OR for \"not equal\" and "
        "\"contains\", by AND otherwise; memory goes through the parts that are there, the country code and "
        "unknown ones too."},
    {Difference::emailEquality, "E-mail equality",
        "Without case, the store compares its normalised column, where diacritics never count; memory "
        "compares as the user's language does."},
    {Difference::localizedComparison, "Localised comparison",
        "Equality and order are of bytes or folded texts in the store, and of the user's language in "
        "memory."},
    {Difference::otherKinds, "Values of another kind",
        "A number is not equal to a text in the store, and has no relation to one in memory: a negative "
        "comparison is true there and false here."},
    {Difference::data, "Data", "The store compares bytes; memory has no comparison for them."},
    {Difference::customRows, "Declared properties of one value",
        "They are rows like entries in the store: a label is asked of them, and an absent date is \"not "
        "within\"."},
    {Difference::importMark, "The mark of the last import",
        "The store compares the flags with this private bit, memory without it."},
    {Difference::anyGroup, "Any group", "To be in any group includes smart groups in the store only."},
    {Difference::notInSmartGroup, "Not in a smart group",
        "In the store, a card in no group is in no smart group either."},
    {Difference::membershipOfOthers, "Membership without its property",
        "The store asks for the group whatever the property; memory only asks the property of groups."},
    {Difference::foldedToNothing, "Texts of marks alone",
        "Without diacritics nothing is left of them: every text contains that in the store, and none in "
        "memory."},
    {Difference::foundLength, "Parts of another length",
        "Of a text that contains another, memory wants the part found to be as long as what was sought: "
        "STRASSE contains straße in the store only."},
}};

const std::array<UnaskedLine, 7> kUnasked{{
    {Unasked::bits, "Bits", "The comparison of bits has no predicate."},
    {Unasked::dictionaryKey, "Keys of dictionaries", "Of all keys only those of addresses have columns."},
    {Unasked::packedValue, "Declared arrays and dictionaries", "They are stored packed."},
    {Unasked::noInterval, "Intervals of what is no date",
        "What is no date, and an interval that is no number, have no distance from today."},
    {Unasked::unknownProperty, "Unknown properties", "What one of the classes searched does not have."},
    {Unasked::notText, "Whole cards without a text", "Only cards have a text to search, and only for texts."},
    {Unasked::smartGroup, "Smart groups of these", "Membership where the group's own search is unasked."},
}};

} // namespace test
