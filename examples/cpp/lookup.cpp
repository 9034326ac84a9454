// Address lookup as a mail program does it, over the object interface: the mail addresses of everybody in
// whose card the text stands, whatever the case and the accents, a line each, as a message is addressed.
//
//   c++ -std=c++20 lookup.cpp -o lookup $(pkg-config --cflags --libs roster)
//   ./lookup lima
#include <roster/core/ZRConstants.h>
#include <roster/core/ZRMultiValue.h>
#include <roster/core/ZRPerson.h>
#include <roster/store/ZRRoster.h>

#include <iostream>

namespace {

void printAddresses(const ZRPerson& person)
{
    const platform::Value value = person.valueForProperty(kZREmailProperty);
    const auto* addresses = value.as<ZRMultiValue>(); // null for a card without addresses
    for (ZRIndex i = 0; addresses && i < addresses->count(); ++i)
        std::cout << person.compositeName() << " <" << addresses->valueAtIndex(i).asText() << ">\n";
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: lookup TEXT\n";
        return 2;
    }
    const auto roster = ZRRoster::sharedRoster();
    if (!roster) {
        std::cerr << "lookup: the contacts cannot be opened\n";
        return 3;
    }
    const auto people = roster->peopleMatchingText(argv[1]);
    for (const auto& record : people)
        if (const auto* person = dynamic_cast<const ZRPerson*>(record.get()))
            printAddresses(*person);
    return people.empty() ? 1 : 0;
}
