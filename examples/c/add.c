// A new card with labelled addresses, one of them the primary one, in a group, with a property of our own.
//
//   cc -std=c11 add.c -o add $(pkg-config --cflags --libs roster)
//   ./add Ana Lima ana@lima.example
#include <roster/roster.h>

#include <stdio.h>

// A property that no other program has: its name begins with a domain of ours.
static const char kCustomerNumber[] = "org.example.customerNumber";

static bool setText(ZRRecordRef record, const char* property, const char* text)
{
    ZRStringRef value = ZRStringCreateWithUTF8(text);
    bool isSet = ZRRecordSetValue(record, property, value);
    ZRRelease(value);
    return isSet;
}

static bool setNumber(ZRRecordRef record, const char* property, int64_t number)
{
    ZRNumberRef value = ZRNumberCreateWithInteger(number);
    bool isSet = ZRRecordSetValue(record, property, value);
    ZRRelease(value);
    return isSet;
}

// Declares the property once and for all; where it is known already nothing happens.
static void declareCustomerNumber(ZRRosterRef roster)
{
    const char* names[] = {kCustomerNumber};
    ZRTypeRef types[] = {ZRNumberCreateWithInteger(kZRPropertyTypeInteger)};
    ZRDictionaryRef definitions = ZRDictionaryCreate(names, types, 1);
    ZRAddPropertiesAndTypes(roster, kZRPersonRecordType, definitions);
    ZRRelease(definitions);
    ZRRelease(types[0]);
}

// The address at home, and one at work, which is the one to write to.
static bool setAddresses(ZRPersonRef person, const char* atHome)
{
    ZRMutableMultiValueRef addresses = ZRMultiValueCreateMutable();
    ZRStringRef home = ZRStringCreateWithUTF8(atHome), work = ZRStringCreateWithUTF8("sales@example.org");
    ZRStringRef chosen = NULL;
    bool isSet = ZRMultiValueAdd(addresses, home, kZREmailHomeLabel, NULL)
        && ZRMultiValueAdd(addresses, work, kZREmailWorkLabel, &chosen)
        && ZRMultiValueSetPrimaryIdentifier(addresses, ZRStringGetUTF8(chosen))
        && ZRRecordSetValue(person, kZREmailProperty, addresses);
    ZRRelease(chosen);
    ZRRelease(work);
    ZRRelease(home);
    ZRRelease(addresses);
    return isSet;
}

// The group of that name; made where there is none. The caller releases it.
static ZRGroupRef copyGroup(ZRRosterRef roster, const char* name)
{
    ZRStringRef value = ZRStringCreateWithUTF8(name);
    ZRSearchElementRef search = ZRGroupCreateSearchElement(kZRGroupNameProperty, NULL, NULL, value, kZREqual);
    ZRArrayRef found = ZRCopyArrayOfMatchingRecords(roster, search);
    ZRGroupRef group = ZRRetain(ZRArrayGetValueAtIndex(found, 0));
    ZRRelease(found);
    ZRRelease(search);
    ZRRelease(value);
    if (!group) {
        group = ZRGroupCreate();
        setText(group, kZRGroupNameProperty, name);
    }
    return group;
}

static bool fill(ZRRosterRef roster, ZRPersonRef person, char** words)
{
    ZRGroupRef group = copyGroup(roster, "Customers");
    bool isFilled = setText(person, kZRFirstNameProperty, words[0])
        && setText(person, kZRLastNameProperty, words[1]) && setAddresses(person, words[2])
        && setNumber(person, kCustomerNumber, 1000) && ZRGroupAddMember(group, person);
    ZRRelease(group);
    return isFilled;
}

int main(int argc, char** argv)
{
    if (argc != 4) {
        fprintf(stderr, "usage: add FIRST LAST ADDRESS\n");
        return 2;
    }
    ZRRosterRef roster = ZRGetSharedRoster();
    if (!roster) {
        fprintf(stderr, "add: the contacts cannot be opened\n");
        return 3;
    }
    declareCustomerNumber(roster);
    ZRPersonRef person = ZRPersonCreate(); // it is in the roster from here on, and on the disk after ZRSave
    bool isSaved = fill(roster, person, argv + 1) && ZRSave(roster);
    if (isSaved) {
        ZRStringRef id = ZRRecordCopyUniqueId(person);
        printf("%s\n", ZRStringGetUTF8(id));
        ZRRelease(id);
    } else
        fprintf(stderr, "add: %s cannot be saved\n", argv[1]);
    ZRRelease(person);
    return isSaved ? 0 : 3;
}
