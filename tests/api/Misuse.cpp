// How each plain function is called, rightly and wrongly: one row a function.
#include "api/Misuse.h"

#include "core/ZRInfo.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRRoster.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace test {

namespace {

constexpr char kNoUTF8[] = "\xff\xfe";
/// What can be no address.
const auto bareWord = reinterpret_cast<ZRTypeRef>(std::uintptr_t{4096});
constexpr char kCard[] =
    "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Lovelace;Ada;;;\r\nFN:Ada Lovelace\r\nEND:VCARD\r\n";
constexpr char kIdOfPerson[] = "01234567-89AB-CDEF-0123-456789ABCDEF:ZRPerson";

ZRTypeRef string(const char* text) { return ZRStringCreateWithUTF8(text); }

/// One entry.
ZRMutableMultiValueRef entries()
{
    const auto made = ZRMultiValueCreateMutable();
    const auto value = string("ada@home.example");
    ZRMultiValueAdd(made, value, kZRHomeLabel, nullptr);
    ZRRelease(value);
    return made;
}

/// A name, its value taken over.
ZRTypeRef dictionary(const char* key, ZRTypeRef value)
{
    const auto made = ZRDictionaryCreate(&key, &value, 1);
    ZRRelease(value);
    return made;
}

ZRTypeRef search()
{
    const auto value = string("Ada");
    const auto made = ZRPersonCreateSearchElement(kZRFirstNameProperty, nullptr, nullptr, value, kZREqual);
    ZRRelease(value);
    return made;
}

ZRTypeRef smartGroup() { return reinterpret_cast<ZRTypeRef>(ZRSmartGroup::init().leak()); }

/// The record in which the roster keeps what is about itself: neither a person nor a group.
ZRTypeRef infoRecord()
{
    const auto roster = ZRRoster::sharedRoster();
    auto info = locked(*roster, ZRAccess::write, [&]() ZR_NTS { return roster->nts_Info(); });
    return reinterpret_cast<ZRTypeRef>(info.leak());
}

/// Every index that an array of one element does not have.
Given<ZRIndex> index(ZRIndex right, ZRIndex firstBad = 1)
{
    constexpr auto limits = std::numeric_limits<ZRIndex>();
    return given<ZRIndex>(right, {-1, firstBad, limits.max(), limits.min()});
}

} // namespace

Samples::Samples()
{
    const auto multiValue = entries();
    const auto person = ZRPersonCreate();
    const auto name = string("Ada");
    ZRRecordSetValue(person, kZRFirstNameProperty, name);
    ZRRecordSetValue(person, kZREmailProperty, multiValue);
    const ZRTypeRef element = search();
    _handles = {{kZRTypeNull, ZRGetNull()}, {kZRTypeString, name},
        {kZRTypeNumber, ZRNumberCreateWithReal(1.5)}, {kZRTypeDate, ZRDateCreateWithSecondsSince1970(43200)},
        {kZRTypeData, ZRDataCreate(kCard, sizeof kCard - 1)}, {kZRTypeArray, ZRArrayCreate(&element, 1)},
        {kZRTypeDictionary, dictionary("org.example.age", ZRNumberCreateWithInteger(kZRPropertyTypeInteger))},
        {kZRTypeMultiValue, ZRRecordCopyValue(person, kZREmailProperty)},
        {kZRTypeMutableMultiValue, multiValue}, {kZRTypePerson, person}, {kZRTypeGroup, ZRGroupCreate()},
        {kZRTypeSmartGroup, smartGroup()}, {kZRTypeRecord, infoRecord()}, {kZRTypeSearchElement, element},
        {kZRTypeRoster, ZRGetSharedRoster()}};
    std::fill(std::begin(_list), std::end(_list), name);
    _listWithHole[0] = name;
    _listWithHole[1] = nullptr;
}

Samples::~Samples()
{
    const auto roster = of(kZRTypeRoster);
    for (const auto& [kind, sample] : _handles) {
        if (kind != kZRTypeRecord)
            ZRRemoveRecord(roster, sample);
        if (kind != kZRTypeNull && kind != kZRTypeRoster)
            ZRRelease(sample);
    }
}

Given<ZRTypeRef> handle(std::vector<ZRTypeID> kinds, Null null)
{
    const auto wrong = [=](const Samples& samples) {
        std::vector<ZRTypeRef> handles = {bareWord};
        if (null == Null::refused)
            handles.push_back(nullptr);
        for (const auto& [kind, sample] : samples.all())
            if (std::ranges::find(kinds, kind) == kinds.end())
                handles.push_back(sample);
        return handles;
    };
    return {[=](const Samples& samples) { return samples.of(kinds.front()); }, wrong};
}

Given<ZRTypeRef> anyHandle(ZRTypeID right, Null null)
{
    std::vector<ZRTypeID> kinds = {right};
    for (ZRTypeID kind = kZRTypeNull; kind <= kZRTypeRoster; ++kind)
        kinds.push_back(kind);
    return handle(kinds, null);
}

Given<const char*> text(const char* right, Null null, std::vector<const char*> wrong)
{
    wrong.push_back(kNoUTF8);
    if (null == Null::refused)
        wrong.push_back(nullptr);
    return given<const char*>(right, wrong);
}

namespace {

Given<ZRTypeRef> a(ZRTypeID kind) { return handle({kind}); }
Given<ZRTypeRef> orNone(ZRTypeID kind) { return handle({kind}, Null::taken); }
Given<ZRTypeRef> record() { return handle({kZRTypePerson, kZRTypeGroup, kZRTypeSmartGroup, kZRTypeRecord}); }
Given<ZRTypeRef> group() { return handle({kZRTypeGroup, kZRTypeSmartGroup}); }
Given<ZRTypeRef> entriesOf() { return handle({kZRTypeMultiValue, kZRTypeMutableMultiValue}); }
Given<ZRTypeRef> editable() { return a(kZRTypeMutableMultiValue); }
/// Stands for an argument that cannot be wrong.
template <class T>
Given<T> plain(T value)
{
    return given<T>(value);
}
Given<ZRTypeRef*> noOutput() { return plain<ZRTypeRef*>(nullptr); }
Given<ZRIndex> count() { return given<ZRIndex>(2, {-1, std::numeric_limits<ZRIndex>::min()}); }
Given<const ZRTypeRef*> list()
{
    return {[](const Samples& samples) { return samples.list(); },
        [](const Samples& samples) {
            return std::vector<const ZRTypeRef*>{nullptr, samples.listWithHole()};
        }};
}
Given<const char* const*> keys()
{
    static const char* const right[] = {"a", "b"};
    static const char* const withHole[] = {"a", nullptr};
    static const char* const noText[] = {"a", kNoUTF8};
    return given<const char* const*>(right, {nullptr, withHole, noText});
}
Given<const char*> label() { return text(kZRWorkLabel, Null::refused, {""}); }
Given<const char*> recordType() { return text(kZRPersonRecordType, Null::refused, {"", "ZRNothing"}); }
Given<const char*> multiProperty()
{
    return text(kZREmailProperty, Null::refused, {"", kZRFirstNameProperty, "nothing"});
}
Given<const char*> property() { return text(kZRFirstNameProperty, Null::refused, {"", "nothing"}); }
Given<ZRSearchComparison> comparison() { return given<ZRSearchComparison>(kZREqual, {-1, 27, INT32_MAX}); }
/// The identifier of the first entry of the person and its multi-value.
Given<const char*> identifier()
{
    const auto right = [](const Samples& samples) {
        static std::string kept;
        const auto found = ZRMultiValueCopyIdentifierAtIndex(samples.of(kZRTypeMultiValue), 0);
        kept = ZRStringGetUTF8(found);
        ZRRelease(found);
        return kept.c_str();
    };
    return {right, text("", Null::refused, {"", "nothing"}).wrong};
}
void doNothing(const char*, ZRTypeRef, ZRDictionaryRef, void*) { }

/// A function without an answer fails by doing nothing, which other tests look at.
template <class... A>
Row silentRow(const char* name, void (*function)(A...), std::type_identity_t<Given<A>>... arguments)
{
    static void (*called)(A...) = nullptr;
    called = function;
    bool (*const answering)(A...) = [](A... values) { return called(values...), false; };
    return row(name, answering, false, arguments...).quiet();
}

} // namespace

// NOLINTNEXTLINE(bugprone-macro-parentheses): the name of a function
#define ROW(function, ...) row(#function, function, __VA_ARGS__)
#define SILENT_ROW(function, ...) silentRow(#function, function __VA_OPT__(, ) __VA_ARGS__)

const std::vector<Row>& allRows()
{
    static const std::vector<Row> rows = {
        ROW(ZRRetain, nullptr, anyHandle(kZRTypeString)),
        SILENT_ROW(ZRRelease, given<ZRTypeRef>(nullptr, {bareWord})),
        ROW(ZREqual, false, anyHandle(kZRTypeString), a(kZRTypeString)),
        ROW(ZRHash, 0, anyHandle(kZRTypeString)),
        ROW(ZRGetTypeID, kZRTypeNone, anyHandle(kZRTypeString)),
        ROW(ZRCopyDescription, nullptr, anyHandle(kZRTypeString)),
        ROW(ZRGetNull, nullptr),
        ROW(ZRStringCreateWithUTF8, nullptr, text("text")),
        ROW(ZRStringCreateWithBytes, nullptr, given<const void*>("text", {nullptr, kNoUTF8}),
            plain<size_t>(2)),
        ROW(ZRStringGetUTF8, "", a(kZRTypeString)),
        ROW(ZRStringGetUTF8Length, 0, a(kZRTypeString)),
        ROW(ZRNumberCreateWithInteger, nullptr, plain<int64_t>(7)),
        ROW(ZRNumberCreateWithReal, nullptr, plain(0.5)),
        ROW(ZRNumberCreateWithBool, nullptr, plain(true)),
        ROW(ZRNumberGetInteger, 0, a(kZRTypeNumber)),
        ROW(ZRNumberGetReal, 0, a(kZRTypeNumber)),
        ROW(ZRDateCreateWithSecondsSince1970, nullptr, given(1.0, {double(NAN), double(INFINITY)})),
        ROW(ZRDateGetSecondsSince1970, 0, a(kZRTypeDate)),
        ROW(ZRDataCreate, nullptr, given<const void*>("bytes", {nullptr}), plain<size_t>(5)),
        ROW(ZRDataGetBytes, nullptr, a(kZRTypeData)),
        ROW(ZRDataGetLength, 0, a(kZRTypeData)),
        ROW(ZRArrayCreate, nullptr, list(), count()),
        ROW(ZRArrayGetCount, 0, a(kZRTypeArray)),
        ROW(ZRArrayGetValueAtIndex, nullptr, a(kZRTypeArray), index(0)),
        ROW(ZRDictionaryCreate, nullptr, keys(), list(), count()),
        ROW(ZRDictionaryGetCount, 0, a(kZRTypeDictionary)),
        ROW(ZRDictionaryGetValue, nullptr, a(kZRTypeDictionary),
            text("org.example.age", Null::refused, {"", "nothing"})),
        ROW(ZRDictionaryCopyKeys, nullptr, a(kZRTypeDictionary)),

        ROW(ZRGetSharedRoster, nullptr),
        ROW(ZRCopyArrayOfAllPeople, nullptr, a(kZRTypeRoster)),
        ROW(ZRCopyArrayOfAllGroups, nullptr, a(kZRTypeRoster)),
        ROW(ZRCopyRecordForUniqueId, nullptr, a(kZRTypeRoster),
            text(kIdOfPerson, Null::refused, {"", "nothing", ":ZRPerson"}))
            .quiet(),
        ROW(ZRCopyRecordTypeFromUniqueId, nullptr, a(kZRTypeRoster),
            text(kIdOfPerson, Null::refused, {"", "nothing", ":ZRPerson"})),
        ROW(ZRCopyArrayOfMatchingRecords, nullptr, a(kZRTypeRoster), a(kZRTypeSearchElement)),
        ROW(ZRGetMe, nullptr, a(kZRTypeRoster)).quiet(),
        SILENT_ROW(ZRSetMe, a(kZRTypeRoster), orNone(kZRTypePerson)),
        ROW(ZRHasUnsavedChanges, false, a(kZRTypeRoster)),
        ROW(ZRSave, false, a(kZRTypeRoster)),
        ROW(ZRAddRecord, false, a(kZRTypeRoster), record()),
        ROW(ZRRemoveRecord, false, a(kZRTypeRoster), record()),
        ROW(ZRRecordCopyValue, nullptr, record(), property()),
        ROW(ZRRecordSetValue, false, record(), property(), handle({kZRTypeString, kZRTypeNull}, Null::taken)),
        ROW(ZRRecordRemoveValue, false, record(), property()),
        ROW(ZRRecordCopyUniqueId, nullptr, record()),
        ROW(ZRRecordCopyRecordType, nullptr, record()),
        ROW(ZRRecordCreateCopy, nullptr, record()),
        ROW(ZRRecordIsReadOnly, false, record()).quiet(),
        ROW(ZRAddPropertiesAndTypes, 0, a(kZRTypeRoster), recordType(), a(kZRTypeDictionary)),
        ROW(ZRRemoveProperties, 0, a(kZRTypeRoster), recordType(), a(kZRTypeArray)).quiet(),
        ROW(ZRCopyArrayOfPropertiesForRecordType, nullptr, a(kZRTypeRoster), recordType()),
        ROW(ZRTypeOfProperty, kZRPropertyTypeUnknown, a(kZRTypeRoster), recordType(), property()),
        ROW(ZRCopyLocalizedPropertyOrLabel, nullptr, text(kZRWorkLabel)),

        ROW(ZRPersonCreate, nullptr),
        ROW(ZRPersonCreateWithVCardRepresentation, nullptr, a(kZRTypeData)),
        ROW(ZRPersonCopyVCardRepresentation, nullptr, a(kZRTypePerson)),
        ROW(ZRCopyPeopleFromVCardData, nullptr, a(kZRTypeRoster), a(kZRTypeData), noOutput()),
        ROW(ZRPersonCopyParentGroups, nullptr, a(kZRTypePerson)),
        ROW(ZRPersonCopyImageData, nullptr, a(kZRTypePerson)).quiet(),
        ROW(ZRPersonSetImageData, false, a(kZRTypePerson), orNone(kZRTypeData)),
        ROW(ZRGroupCreate, nullptr),
        ROW(ZRGroupCopyParentGroups, nullptr, group()),
        ROW(ZRGroupAddMember, false, a(kZRTypeGroup), a(kZRTypePerson)),
        ROW(ZRGroupRemoveMember, false, a(kZRTypeGroup), a(kZRTypePerson)),
        ROW(ZRGroupAddGroup, false, a(kZRTypeGroup), handle({kZRTypeSmartGroup})),
        ROW(ZRGroupRemoveGroup, false, a(kZRTypeGroup), handle({kZRTypeSmartGroup, kZRTypeGroup})),
        ROW(ZRGroupCopyArrayOfAllMembers, nullptr, group()),
        ROW(ZRGroupCopyArrayOfAllSubgroups, nullptr, group()),
        ROW(ZRGroupCopyDistributionIdentifier, nullptr, a(kZRTypeGroup), multiProperty(), a(kZRTypePerson)),
        ROW(ZRGroupSetDistributionIdentifier, false, a(kZRTypeGroup), identifier(), multiProperty(),
            a(kZRTypePerson)),

        ROW(ZRMultiValueCreate, nullptr),
        ROW(ZRMultiValueCreateMutable, nullptr),
        ROW(ZRMultiValueCreateCopy, nullptr, entriesOf()),
        ROW(ZRMultiValueCreateMutableCopy, nullptr, entriesOf()),
        ROW(ZRMultiValueCount, 0, entriesOf()),
        ROW(ZRMultiValuePropertyType, kZRPropertyTypeUnknown, entriesOf()),
        ROW(ZRMultiValueCopyValueAtIndex, nullptr, entriesOf(), index(0)),
        ROW(ZRMultiValueCopyLabelAtIndex, nullptr, entriesOf(), index(0)),
        ROW(ZRMultiValueCopyIdentifierAtIndex, nullptr, entriesOf(), index(0)),
        ROW(ZRMultiValueIndexForIdentifier, 0, entriesOf(), text("nothing", Null::refused, {""})),
        ROW(ZRMultiValueCopyPrimaryIdentifier, nullptr, entriesOf()),
        ROW(ZRMultiValueAdd, false, editable(), anyHandle(kZRTypeString), label(), noOutput()),
        ROW(ZRMultiValueInsert, false, editable(), anyHandle(kZRTypeString), label(), index(0, 2),
            noOutput()),
        ROW(ZRMultiValueRemove, false, editable(), index(0)),
        ROW(ZRMultiValueReplaceValue, false, editable(), index(0), anyHandle(kZRTypeString)),
        ROW(ZRMultiValueReplaceLabel, false, editable(), index(0), label()),
        ROW(ZRMultiValueSetPrimaryIdentifier, false, editable(), identifier()),

        ROW(ZRPersonCreateSearchElement, nullptr, text(kZRFirstNameProperty, Null::taken),
            text(kZRWorkLabel, Null::taken), text(kZRAddressCityKey, Null::taken),
            anyHandle(kZRTypeString, Null::taken), comparison()),
        ROW(ZRGroupCreateSearchElement, nullptr, text(kZRGroupNameProperty, Null::taken),
            text(kZRWorkLabel, Null::taken), text(kZRAddressCityKey, Null::taken),
            anyHandle(kZRTypeString, Null::taken), comparison()),
        ROW(ZRSearchElementCreateWithConjunction, nullptr, plain<ZRSearchConjunction>(kZRConjunctionOr),
            a(kZRTypeArray)),
        ROW(ZRSearchElementMatchesRecord, false, a(kZRTypeSearchElement), a(kZRTypePerson)),
        ROW(ZRCopyDefaultCountryCode, nullptr, a(kZRTypeRoster)),
        ROW(ZRCreateFormattedAddressFromDictionary, nullptr, a(kZRTypeRoster), a(kZRTypeDictionary)),

        ROW(ZRMainQueueGetFileDescriptor, -1),
        SILENT_ROW(ZRMainQueueDrain),
        ROW(ZRObserverCreate, nullptr, text(kZRDatabaseChangedNotification, Null::taken),
            anyHandle(kZRTypeRoster, Null::taken), given<ZRNoticeCallback>(doNothing, {nullptr}),
            plain<void*>(nullptr)),
        SILENT_ROW(ZRObserverDestroy, plain<ZRObserver*>(nullptr)),
    };
    return rows;
}

} // namespace test
