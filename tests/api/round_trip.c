// Whether a program in plain C gets back what it saved: `write` makes people and groups, `read` finds them
// again in a process of its own. A step that fails says where, and ends the program with status 1.
#include "api/roster.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define CHECK(condition)                                                                                     \
    do                                                                                                       \
        if (!(condition)) {                                                                                  \
            fprintf(stderr, "round_trip.c:%d: %s\n", __LINE__, #condition);                                  \
            exit(1);                                                                                         \
        }                                                                                                    \
    while (0)

#define RELEASE(...) releaseAll((ZRTypeRef[]){__VA_ARGS__, NULL})

static const char kHeight[] = "org.example.height", kNicknames[] = "org.example.nicknames";

static void releaseAll(const ZRTypeRef* handles)
{
    for (; *handles; ++handles)
        ZRRelease(*handles);
}

// Takes over the handle.
static bool isText(ZRStringRef text, const char* expected)
{
    const bool is = strcmp(ZRStringGetUTF8(text), expected) == 0;
    ZRRelease(text);
    return is;
}

static bool isNumber(ZRNumberRef number, double expected)
{
    const bool is = ZRNumberGetReal(number) == expected;
    ZRRelease(number);
    return is;
}

// Takes over the value.
static void set(ZRRecordRef record, const char* property, ZRTypeRef value)
{
    CHECK(value && ZRRecordSetValue(record, property, value));
    ZRRelease(value);
}

static void add(ZRMutableMultiValueRef entries, const char* text, const char* label)
{
    ZRStringRef value = ZRStringCreateWithUTF8(text);
    CHECK(ZRMultiValueAdd(entries, value, label, NULL));
    ZRRelease(value);
}

static ZRPersonRef person(const char* first, const char* last)
{
    ZRPersonRef made = ZRPersonCreate();
    set(made, kZRFirstNameProperty, ZRStringCreateWithUTF8(first));
    set(made, kZRLastNameProperty, ZRStringCreateWithUTF8(last));
    return made;
}

static void addAddresses(ZRPersonRef ada)
{
    ZRMutableMultiValueRef emails = ZRMultiValueCreateMutable();
    add(emails, "ada@home.example", kZREmailHomeLabel);
    ZRStringRef work = NULL, value = ZRStringCreateWithUTF8("ada@work.example");
    CHECK(ZRMultiValueInsert(emails, value, kZREmailWorkLabel, 1, &work));
    CHECK(ZRMultiValueSetPrimaryIdentifier(emails, ZRStringGetUTF8(work)));
    RELEASE(value, work);
    set(ada, kZREmailProperty, emails);

    ZRMutableMultiValueRef homes = ZRMultiValueCreateMutable();
    const char* keys[] = {kZRAddressStreetKey, kZRAddressCityKey, kZRAddressCountryCodeKey};
    ZRTypeRef values[] = {
        ZRStringCreateWithUTF8("1 Mill Lane"), ZRStringCreateWithUTF8("Ely"), ZRStringCreateWithUTF8("gb")};
    ZRDictionaryRef home = ZRDictionaryCreate(keys, values, 3);
    CHECK(ZRMultiValueAdd(homes, home, kZRAddressHomeLabel, NULL));
    RELEASE(values[0], values[1], values[2], home);
    set(ada, kZRAddressProperty, homes);
}

static void addCustomProperties(ZRRosterRef roster, ZRPersonRef ada)
{
    const char* names[] = {kHeight, kNicknames};
    ZRTypeRef types[] = {ZRNumberCreateWithInteger(kZRPropertyTypeReal),
        ZRNumberCreateWithInteger(kZRPropertyTypeMulti | kZRPropertyTypeString)};
    ZRDictionaryRef declared = ZRDictionaryCreate(names, types, 2);
    CHECK(ZRAddPropertiesAndTypes(roster, kZRPersonRecordType, declared) == 2);
    CHECK(ZRAddPropertiesAndTypes(roster, kZRPersonRecordType, declared) == 0);
    RELEASE(types[0], types[1], declared);
    set(ada, kHeight, ZRNumberCreateWithReal(1.65));
    ZRMutableMultiValueRef nicknames = ZRMultiValueCreateMutable();
    add(nicknames, "The Countess", kZROtherLabel);
    set(ada, kNicknames, nicknames);
}

// Prints the id of the group that holds the others.
static void writeAll(ZRRosterRef roster)
{
    ZRPersonRef ada = person("Ada", "Byron"), charles = person("Charles", "Babbage");
    addAddresses(ada);
    addCustomProperties(roster, ada);
    ZRGroupRef engines = ZRGroupCreate(), makers = ZRGroupCreate();
    set(engines, kZRGroupNameProperty, ZRStringCreateWithUTF8("Engines"));
    set(makers, kZRGroupNameProperty, ZRStringCreateWithUTF8("Makers"));
    CHECK(ZRGroupAddMember(engines, ada) && ZRGroupAddMember(makers, charles)
        && ZRGroupAddGroup(engines, makers));
    CHECK(!ZRGroupAddGroup(makers, engines));
    ZRMultiValueRef emails = ZRRecordCopyValue(ada, kZREmailProperty);
    ZRStringRef home = ZRMultiValueCopyIdentifierAtIndex(emails, 0);
    CHECK(ZRGroupSetDistributionIdentifier(engines, ZRStringGetUTF8(home), kZREmailProperty, ada));
    ZRSetMe(roster, ada);
    CHECK(ZRSave(roster));
    ZRStringRef id = ZRRecordCopyUniqueId(engines);
    puts(ZRStringGetUTF8(id));
    RELEASE(ada, charles, engines, makers, emails, home, id);
}

// The one person whose property holds the text, in any case; the caller releases.
static ZRPersonRef find(
    ZRRosterRef roster, const char* property, const char* label, const char* key, const char* text)
{
    ZRStringRef value = ZRStringCreateWithUTF8(text);
    ZRSearchElementRef search =
        ZRPersonCreateSearchElement(property, label, key, value, kZRContainsSubStringCaseInsensitive);
    ZRArrayRef found = ZRCopyArrayOfMatchingRecords(roster, search);
    CHECK(ZRArrayGetCount(found) == 1);
    ZRPersonRef one = ZRRetain(ZRArrayGetValueAtIndex(found, 0));
    CHECK(ZRGetTypeID(one) == kZRTypePerson && ZRSearchElementMatchesRecord(search, one));
    RELEASE(found, search, value);
    return one;
}

static void readAda(ZRRosterRef roster, ZRPersonRef ada)
{
    CHECK(isText(ZRRecordCopyValue(ada, kZRLastNameProperty), "Byron"));
    CHECK(isNumber(ZRRecordCopyValue(ada, kHeight), 1.65));
    CHECK(ZRTypeOfProperty(roster, kZRPersonRecordType, kHeight) == kZRPropertyTypeReal);
    ZRMultiValueRef nicknames = ZRRecordCopyValue(ada, kNicknames);
    CHECK(ZRMultiValueCount(nicknames) == 1
        && isText(ZRMultiValueCopyValueAtIndex(nicknames, 0), "The Countess"));
    ZRMultiValueRef emails = ZRRecordCopyValue(ada, kZREmailProperty);
    CHECK(ZRMultiValueCount(emails) == 2);
    CHECK(ZRMultiValuePropertyType(emails) == (kZRPropertyTypeMulti | kZRPropertyTypeString));
    CHECK(isText(ZRMultiValueCopyLabelAtIndex(emails, 1), kZREmailWorkLabel));
    ZRStringRef primary = ZRMultiValueCopyPrimaryIdentifier(emails);
    CHECK(ZRMultiValueIndexForIdentifier(emails, ZRStringGetUTF8(primary)) == 1);
    ZRMultiValueRef homes = ZRRecordCopyValue(ada, kZRAddressProperty);
    ZRDictionaryRef home = ZRMultiValueCopyValueAtIndex(homes, 0);
    CHECK(strcmp(ZRStringGetUTF8(ZRDictionaryGetValue(home, kZRAddressCityKey)), "Ely") == 0);
    RELEASE(nicknames, emails, primary, homes, home);
}

static void readGroups(ZRRosterRef roster, const char* groupId, ZRPersonRef ada)
{
    ZRGroupRef engines = ZRCopyRecordForUniqueId(roster, groupId);
    CHECK(
        ZRGetTypeID(engines) == kZRTypeGroup && isText(ZRRecordCopyRecordType(engines), kZRGroupRecordType));
    ZRArrayRef members = ZRGroupCopyArrayOfAllMembers(engines),
               below = ZRGroupCopyArrayOfAllSubgroups(engines);
    CHECK(ZRArrayGetCount(members) == 1 && ZRArrayGetValueAtIndex(members, 0) == ada);
    CHECK(isText(ZRRecordCopyValue(ZRArrayGetValueAtIndex(below, 0), kZRGroupNameProperty), "Makers"));
    ZRMultiValueRef emails = ZRRecordCopyValue(ada, kZREmailProperty);
    ZRStringRef chosen = ZRGroupCopyDistributionIdentifier(engines, kZREmailProperty, ada);
    CHECK(ZRMultiValueIndexForIdentifier(emails, ZRStringGetUTF8(chosen)) == 0);
    RELEASE(engines, members, below, emails, chosen);
}

static void readAll(ZRRosterRef roster, const char* groupId)
{
    ZRPersonRef ada = find(roster, kZREmailProperty, kZREmailWorkLabel, NULL, "ADA@WORK");
    CHECK(ada == ZRGetMe(roster));
    ZRPersonRef again = find(roster, kZRAddressProperty, NULL, kZRAddressCityKey, "ely");
    CHECK(again == ada);
    readAda(roster, ada);
    readGroups(roster, groupId, ada);
    RELEASE(again, ada);
}

int main(int argc, char** argv)
{
    ZRRosterRef roster = ZRGetSharedRoster();
    CHECK(roster && ZRGetTypeID(roster) == kZRTypeRoster);
    if (argc == 2 && strcmp(argv[1], "write") == 0)
        writeAll(roster);
    else if (argc == 3 && strcmp(argv[1], "read") == 0)
        readAll(roster, argv[2]);
    else
        return 2;
    return 0;
}
