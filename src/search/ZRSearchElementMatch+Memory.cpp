// What a comparison answers of one live record.
#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRMultiValue.h"
#include "core/ZRPerson.h"
#include "search/SearchComparison.h"
#include "search/SearchDates.h"
#include "search/SearchPredicates.h"
#include "search/SearchValues.h"
#include "search/SearchedGroups.h"
#include "search/ZRSearchElementMatch.h"

#include <algorithm>

using platform::Value;

namespace {

/// Of the flags of a card, what a search value asks for: the bits of the order above 1, else what it shows.
constexpr std::int64_t orderingBits = 56, showAsBits = 7;

const ZRMultiValue* entriesOf(const Value& value)
{
    const auto* entries = value.as<ZRMultiValue>();
    return entries && entries->count() > 0 ? entries : nullptr;
}

/// The value of the first entry of that label; absent without one.
Value _valueInMultiValue(const Value& multiValue, std::string_view label)
{
    if (const auto* entries = entriesOf(multiValue))
        for (ZRIndex i = 0; i < entries->count(); ++i)
            if (entries->labelAtIndex(i) == label)
                return entries->valueAtIndex(i);
    return {};
}

/// Every value must pass a negative comparison; for any other one is enough.
template <class Values, class Passes>
bool passesWalk(ZRSearchComparison comparison, const Values& values, const Passes& passes)
{
    return wantsNone(comparison) ? std::ranges::all_of(values, passes) : std::ranges::any_of(values, passes);
}

bool isComparable(const Value& search, const Value& record)
{
    if (record.isDate())
        return search.isDate() || search.isNumber();
    return (record.isString() && search.isString()) || (record.isNumber() && search.isNumber())
        || (record.as<ZRRecord>() && search.as<ZRRecord>());
}

bool isTrueOfNone(ZRSearchComparison comparison) { return wantsNone(comparison) && !isInterval(comparison); }

bool hasText(const ZRSearchElementMatch::Text& text) { return text && !text->empty(); }

} // namespace

bool ZRSearchElementMatch::nts_MatchesRecord(const ZRRecord& record) const
{
    if (isWholeCard())
        return nts_wholeCardMatches(record);
    const auto classes = searchRecordClasses();
    if (std::ranges::find(classes, &record.recordClass()) == classes.end())
        return false;
    const std::string property = _propertyOrEmpty();
    if (property == zr::kZRParentGroupsProperty)
        return nts_membershipMatches(record);
    // A class without the property says nothing of the type that another class gives it.
    if (_cache.testCase == TestCase::unknown || _cache.propertyType == kZRPropertyTypeUnknown)
        _nts_CalculatePropertyTypeForRecord(record);
    return passesTest(SearchValues::nts_read(record, property));
}

bool ZRSearchElementMatch::nts_wholeCardMatches(const ZRRecord& record) const
{
    const auto* person = dynamic_cast<const ZRPerson*>(&record);
    const Value text = person ? person->nts_StringForIndexing() : Value();
    const auto& wanted = _definition.value;
    const bool isFound = text.isString() && wanted.isString()
        && (wanted.asText().empty() || platform::contains(text.asText(), wanted.asText(), textOptions()));
    return isFound != _isNegation();
}

bool ZRSearchElementMatch::nts_membershipMatches(const ZRRecord& record) const
{
    if (_definition.value.isNothing())
        return false;
    const auto* group = _definition.value.as<ZRGroup>();
    const bool isMember = group ? nts_isMemberOfGroup(record, *group) : nts_isMemberOfAnyGroup(record);
    return isMember != (_definition.comparison == kZRNotMemberOfGroup);
}

void ZRSearchElementMatch::_nts_CalculatePropertyTypeForRecord(const ZRRecord& record) const
{
    // All groups go by the table of groups; smart ones have a few properties more.
    const auto typeIn = [&](const ZRRecordClass& table) ZR_NTS {
        return ZRRecord::nts_TypeOfProperty(table, _propertyOrEmpty(), *record.nts_Roster());
    };
    _cache.propertyType = typeIn(*searchRecordClasses().front());
    if (_cache.propertyType == kZRPropertyTypeUnknown)
        _cache.propertyType = typeIn(record.recordClass());
    const auto base = zrBaseType(_cache.propertyType);
    const bool isDictionary = base == kZRPropertyTypeDictionary;
    int testCase = base == kZRPropertyTypeArray ? 1 : !isDictionary ? 0 : hasText(_definition.key) ? 2 : 3;
    if (zrIsMultiValueType(_cache.propertyType))
        testCase += hasText(_definition.label) ? 4 : 8;
    _cache.testCase = static_cast<TestCase>(testCase);
}

bool ZRSearchElementMatch::passesTest(const Value& value) const
{
    switch (_cache.testCase) {
    case TestCase::singleArray:
        return _compareSingleArrayWithRecordValue(value);
    case TestCase::singleDictionaryKey:
        return _compareSingleDictionaryKeyWithRecordValue(value);
    case TestCase::singleDictionaryNoKey:
        return _compareSingleDictionaryNoKeyWithRecordValue(value);
    case TestCase::multiLabelScalar:
        return _compareMultiLabelScalarWithRecordValue(value);
    case TestCase::multiLabelArray:
        return _compareMultiLabelArrayWithRecordValue(value);
    case TestCase::multiLabelDictionaryKey:
        return _compareMultiLabelDictionaryKeyWithRecordValue(value);
    case TestCase::multiLabelDictionaryNoKey:
        return _compareMultiLabelDictionaryNoKeyWithRecordValue(value);
    case TestCase::multiNoLabelScalar:
        return _compareMultiNoLabelScalarWithRecordValue(value);
    case TestCase::multiNoLabelArray:
        return _compareMultiNoLabelArrayWithRecordValue(value);
    case TestCase::multiNoLabelDictionaryKey:
        return _compareMultiNoLabelDictionaryKeyWithRecordValue(value);
    case TestCase::multiNoLabelDictionaryNoKey:
        return _compareMultiNoLabelDictionaryNoKeyWithRecordValue(value);
    default:
        return _compareSingleScalarWithRecordValue(value);
    }
}

bool ZRSearchElementMatch::_compareSingleScalarWithRecordValue(const Value& value) const
{
    const auto comparison = _definition.comparison;
    if (comparison == kZRBitsInBitFieldMatch)
        return compareWithRecordValue(value);
    const bool hasSearch = !_definition.value.isNothing(), hasRecord = !value.isNothing();
    if (hasSearch && hasRecord)
        return compareWithRecordValue(value);
    if (hasSearch != hasRecord)
        return isTrueOfNone(comparison);
    return comparison == kZREqual || comparison == kZREqualCaseInsensitive
        || comparison == kZRContainsSubString || comparison == kZRContainsSubStringCaseInsensitive;
}

bool ZRSearchElementMatch::_compareSingleArrayWithRecordValue(const Value& value) const
{
    if (!value.isArray())
        return _compareSingleScalarWithRecordValue(value);
    return std::ranges::any_of(
        value.asArray(), [&](const Value& element) { return _compareSingleScalarWithRecordValue(element); });
}

bool ZRSearchElementMatch::_compareSingleDictionaryKeyWithRecordValue(const Value& value) const
{
    return _compareSingleScalarWithRecordValue(value[*_definition.key]);
}

bool ZRSearchElementMatch::_compareSingleDictionaryNoKeyWithRecordValue(const Value& value) const
{
    const bool isWholeCompared = _definition.value.isArray() || _definition.value.isDictionary();
    if (!value.isDictionary() || isWholeCompared)
        return _compareSingleScalarWithRecordValue(value);
    return passesWalk(_definition.comparison, value.asDictionary()->entries(),
        [&](const auto& entry) { return _compareSingleScalarWithRecordValue(entry.second); });
}

bool ZRSearchElementMatch::_compareMultiLabelScalarWithRecordValue(const Value& value) const
{
    return _compareSingleScalarWithRecordValue(_valueInMultiValue(value, *_definition.label));
}

bool ZRSearchElementMatch::_compareMultiLabelArrayWithRecordValue(const Value& value) const
{
    return _compareSingleArrayWithRecordValue(_valueInMultiValue(value, *_definition.label));
}

bool ZRSearchElementMatch::_compareMultiLabelDictionaryKeyWithRecordValue(const Value& value) const
{
    return _compareSingleDictionaryKeyWithRecordValue(_valueInMultiValue(value, *_definition.label));
}

bool ZRSearchElementMatch::_compareMultiLabelDictionaryNoKeyWithRecordValue(const Value& value) const
{
    return _compareSingleDictionaryNoKeyWithRecordValue(_valueInMultiValue(value, *_definition.label));
}

/// Walks all entries with the form for one of them.
bool ZRSearchElementMatch::compareEntries(const Value& value, SingleForm form) const
{
    const auto* entries = entriesOf(value);
    if (!entries && _definition.value.isNothing())
        return _definition.comparison == kZREqual;
    if (!entries)
        return wantsNone(_definition.comparison);
    return passesWalk(_definition.comparison, entries->_allValues(),
        [&](const Value& entry) { return (this->*form)(entry); });
}

bool ZRSearchElementMatch::_compareMultiNoLabelScalarWithRecordValue(const Value& value) const
{
    return compareEntries(value, &ZRSearchElementMatch::_compareSingleScalarWithRecordValue);
}

bool ZRSearchElementMatch::_compareMultiNoLabelArrayWithRecordValue(const Value& value) const
{
    return compareEntries(value, &ZRSearchElementMatch::_compareSingleArrayWithRecordValue);
}

bool ZRSearchElementMatch::_compareMultiNoLabelDictionaryKeyWithRecordValue(const Value& value) const
{
    return compareEntries(value, &ZRSearchElementMatch::_compareSingleDictionaryKeyWithRecordValue);
}

bool ZRSearchElementMatch::_compareMultiNoLabelDictionaryNoKeyWithRecordValue(const Value& value) const
{
    return compareEntries(value, &ZRSearchElementMatch::_compareSingleDictionaryNoKeyWithRecordValue);
}

std::uint32_t ZRSearchElementMatch::textOptions() const
{
    return platform::kCompareCaseInsensitive
        | (_definition.diacriticInsensitive ? platform::kCompareDiacriticInsensitive : 0u);
}

bool ZRSearchElementMatch::bitsMatch(const Value& value) const
{
    if (!value.isNumber())
        return false;
    const std::int64_t wanted = _definition.value.asInteger(), bits = value.asInteger();
    if (_propertyOrEmpty() == zr::kZRPersonFlags)
        return (bits & (wanted > 1 ? orderingBits : showAsBits)) == wanted;
    return (bits & wanted) == wanted;
}

bool ZRSearchElementMatch::compareWithRecordValue(const Value& recordValue) const
{
    const auto comparison = _definition.comparison;
    const auto& search = _definition.value;
    const bool isBitTest = comparison == kZRBitsInBitFieldMatch;
    const Value value = isBitTest && recordValue.isNothing() ? Value(0) : recordValue;
    if (!isComparable(search, value))
        return false;
    if (isInterval(comparison))
        return search.isNumber() && isWithinInterval(value, comparison, search.asReal());
    const auto order = [&](std::uint32_t options) { return _abCompare(search, value, true, options); };
    switch (comparison) {
    case kZREqual:
        return order(platform::kCompareExactly) == 0;
    case kZRNotEqual:
        return order(platform::kCompareExactly) != 0;
    case kZRLessThan:
        return order(platform::kCompareExactly) == 1;
    case kZRLessThanOrEqual:
        return order(platform::kCompareExactly) != -1;
    case kZRGreaterThan:
        return order(platform::kCompareExactly) == -1;
    case kZRGreaterThanOrEqual:
        return order(platform::kCompareExactly) != 1;
    case kZREqualCaseInsensitive:
        return order(textOptions()) == 0;
    case kZRNotEqualCaseInsensitive:
        return order(textOptions()) != 0;
    case kZRBitsInBitFieldMatch:
        return bitsMatch(value);
    default:
        return textMatches(value);
    }
}

bool ZRSearchElementMatch::textMatches(const Value& value) const
{
    const auto& search = _definition.value;
    constexpr std::uint32_t exactly = platform::kCompareExactly;
    switch (_definition.comparison) {
    case kZRContainsSubString:
        return _abCompareContainsSubString(value, search, exactly);
    case kZRContainsSubStringCaseInsensitive:
        return _abCompareContainsSubString(value, search, textOptions());
    case kZRDoesNotContainSubString:
        return !_abCompareContainsSubString(value, search, exactly);
    case kZRDoesNotContainSubStringCaseInsensitive:
        return !_abCompareContainsSubString(value, search, textOptions());
    case kZRPrefixMatch:
        return _abComparePrefixMatch(value, search, exactly);
    case kZRPrefixMatchCaseInsensitive:
        return _abComparePrefixMatch(value, search, textOptions());
    case kZRSuffixMatch:
        return _abCompareSuffixMatch(value, search, exactly);
    case kZRSuffixMatchCaseInsensitive:
        return _abCompareSuffixMatch(value, search, textOptions());
    default:
        return false;
    }
}
