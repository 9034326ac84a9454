// Address lookup as a mail program does it: the mail addresses of everybody whose name, company or address
// has the text in it, a line each, as a message is addressed.
//
//   cc -std=c11 lookup.c -o lookup $(pkg-config --cflags --libs roster)
//   ./lookup lima
#include <roster/roster.h>

#include <stdio.h>

// Prints a property that is a text, with a blank behind it; nothing where the card says nothing.
static void printText(ZRPersonRef person, const char* property)
{
    ZRStringRef text = ZRRecordCopyValue(person, property);
    if (text)
        printf("%s ", ZRStringGetUTF8(text));
    ZRRelease(text); // as everywhere, NULL is allowed
}

static void printAddresses(ZRPersonRef person)
{
    ZRMultiValueRef addresses = ZRRecordCopyValue(person, kZREmailProperty);
    for (ZRIndex i = 0; i < ZRMultiValueCount(addresses); ++i) {
        ZRStringRef address = ZRMultiValueCopyValueAtIndex(addresses, i);
        printText(person, kZRFirstNameProperty);
        printText(person, kZRLastNameProperty);
        printText(person, kZROrganizationProperty);
        printf("<%s>\n", ZRStringGetUTF8(address));
        ZRRelease(address);
    }
    ZRRelease(addresses);
}

// "The text stands in the name, or in the company, or in an address."
static ZRSearchElementRef createSearch(const char* text)
{
    const char* const properties[] = {kZRFirstNameProperty, kZRLastNameProperty, kZRNicknameProperty,
        kZROrganizationProperty, kZREmailProperty};
    enum { kCount = sizeof properties / sizeof *properties };

    ZRTypeRef parts[kCount];
    ZRStringRef value = ZRStringCreateWithUTF8(text);
    for (int i = 0; i < kCount; ++i)
        parts[i] = ZRPersonCreateSearchElement(
            properties[i], NULL, NULL, value, kZRContainsSubStringCaseInsensitive);
    ZRArrayRef children = ZRArrayCreate(parts, kCount);
    ZRSearchElementRef search = ZRSearchElementCreateWithConjunction(kZRConjunctionOr, children);

    ZRRelease(children); // the search keeps what it needs
    for (int i = 0; i < kCount; ++i)
        ZRRelease(parts[i]);
    ZRRelease(value);
    return search;
}

int main(int argc, char** argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: lookup TEXT\n");
        return 2;
    }
    ZRRosterRef roster = ZRGetSharedRoster(); // borrowed: it stays for as long as the program runs
    if (!roster) {
        fprintf(stderr, "lookup: the contacts cannot be opened\n");
        return 3;
    }
    ZRSearchElementRef search = createSearch(argv[1]);
    ZRArrayRef people = ZRCopyArrayOfMatchingRecords(roster, search);
    ZRIndex count = ZRArrayGetCount(people);
    for (ZRIndex i = 0; i < count; ++i)
        printAddresses(ZRArrayGetValueAtIndex(people, i));
    ZRRelease(people);
    ZRRelease(search);
    return count > 0 ? 0 : 1;
}
