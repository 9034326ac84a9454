// A new card with labelled addresses, one of them the primary one, in a group, with a property of our own,
// over the object interface.
//
//   c++ -std=c++20 add.cpp -o add $(pkg-config --cflags --libs roster)
//   ./add Ana Lima ana@lima.example
#include <roster/core/ZRConstants.h>
#include <roster/core/ZRGroup.h>
#include <roster/core/ZRMutableMultiValue.h>
#include <roster/core/ZRPerson.h>
#include <roster/search/ZRSearchElement.h>
#include <roster/store/ZRRoster.h>

#include <exception>
#include <iostream>

namespace {

using platform::Ref;
using platform::Value;

// A property that no other program has: its name begins with a domain of ours.
constexpr char kCustomerNumber[] = "org.example.customerNumber";

/// Declares the property once and for all; where it is known already nothing happens.
void declareCustomerNumber()
{
    ZRPerson::addPropertiesAndTypes(
        Value::dictionary({{kCustomerNumber, ZRPropertyType{kZRPropertyTypeInteger}}}));
}

/// The address at home, and one at work, which is the one to write to.
Value addresses(std::string_view atHome)
{
    const auto addresses = platform::makeRef<ZRMutableMultiValue>();
    addresses->addValue(atHome, kZREmailHomeLabel);
    addresses->setPrimaryIdentifier(addresses->addValue("sales@example.org", kZREmailWorkLabel));
    return addresses;
}

/// The group of that name, made where there is none.
Ref<ZRGroup> groupNamed(const Ref<ZRRoster>& roster, std::string_view name)
{
    const auto search =
        ZRGroup::searchElementForProperty(kZRGroupNameProperty, std::nullopt, std::nullopt, name, kZREqual);
    for (const auto& record : roster->recordsMatchingSearchElement(search))
        if (auto* group = dynamic_cast<ZRGroup*>(record.get()))
            return Ref<ZRGroup>(group);
    auto group = ZRGroup::initWithRoster(roster);
    group->setValue(name, kZRGroupNameProperty);
    return group;
}

/// False when something of it is refused.
bool fill(const Ref<ZRRoster>& roster, ZRPerson& person, char** words)
{
    return person.setValue(words[0], kZRFirstNameProperty) && person.setValue(words[1], kZRLastNameProperty)
        && person.setValue(addresses(words[2]), kZREmailProperty) && person.setValue(1000, kCustomerNumber)
        && groupNamed(roster, "Customers")->addMember(person);
}

int add(char** words)
{
    const auto roster = ZRRoster::sharedRoster();
    if (!roster) {
        std::cerr << "add: the contacts cannot be opened\n";
        return 3;
    }
    declareCustomerNumber();
    const auto person =
        ZRPerson::initWithRoster(roster); // in the roster from here on, on the disk after save()
    if (!fill(roster, *person, words) || !roster->save()) {
        std::cerr << "add: " << words[0] << " cannot be saved\n";
        return 3;
    }
    std::cout << person->uniqueId() << '\n';
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        std::cerr << "usage: add FIRST LAST ADDRESS\n";
        return 2;
    }
    try {
        return add(argv + 1);
    } catch (
        const std::exception& failure) { // a mistake of ours, such as an empty label: nothing has changed
        std::cerr << "add: " << failure.what() << '\n';
        return 1;
    }
}
