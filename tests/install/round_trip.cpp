// Does a program over the object interface write a roster, and does the next process read all of it back?
//   round_trip write
//   round_trip read
#include <roster/core/ZRConstants.h>
#include <roster/core/ZRGroup.h>
#include <roster/core/ZRMutableMultiValue.h>
#include <roster/core/ZRPerson.h>
#include <roster/search/ZRSearchElement.h>
#include <roster/store/ZRRoster.h>

#include <iostream>
#include <stdexcept>

namespace {

using platform::Ref;
using platform::Value;

constexpr char kShoeSize[] = "org.example.shoeSize";

void check(bool isSo, const char* what)
{
    if (!isSo)
        throw std::runtime_error(what);
}

void writeAll(const Ref<ZRRoster>& roster)
{
    check(
        ZRPerson::addPropertiesAndTypes(Value::dictionary({{kShoeSize, ZRPropertyType{kZRPropertyTypeReal}}}))
            == 1,
        "the property is declared");
    const auto ana = ZRPerson::initWithRoster(roster), bo = ZRPerson::initWithRoster(roster);
    const auto phones = platform::makeRef<ZRMutableMultiValue>();
    phones->addValue("+49 30 123456", kZRPhoneHomeLabel);
    phones->setPrimaryIdentifier(phones->addValue("+49 170 123456", kZRPhoneMobileLabel));
    check(ana->setValue("Ana", kZRFirstNameProperty) && ana->setValue("Lima", kZRLastNameProperty), "names");
    check(ana->setValue(phones, kZRPhoneProperty) && ana->setValue(38.5, kShoeSize), "values");
    check(bo->setValue("Bo", kZRFirstNameProperty), "another name");
    const auto friends = ZRGroup::initWithRoster(roster);
    check(friends->setValue("Friends", kZRGroupNameProperty) && friends->addMember(*ana), "group");
    check(roster->save(), "save");
}

ZRRecordList matches(
    const Ref<ZRRoster>& roster, std::string_view property, std::string_view text, ZRSearchComparison how)
{
    return roster->recordsMatchingSearchElement(
        ZRPerson::searchElementForProperty(property, std::nullopt, std::nullopt, text, how));
}

void readAll(const Ref<ZRRoster>& roster)
{
    check(matches(roster, kZRFirstNameProperty, "Bo", kZREqual).size() == 1, "the second card");
    const auto found = matches(roster, kZRLastNameProperty, "LIM", kZRPrefixMatchCaseInsensitive);
    check(found.size() == 1, "the first card");
    check(found[0]->valueForProperty(kZRFirstNameProperty) == Value("Ana"), "the name");
    check(found[0]->valueForProperty(kShoeSize) == Value(38.5), "the number");
    const Value value = found[0]->valueForProperty(kZRPhoneProperty);
    const auto* phones = value.as<ZRMultiValue>();
    check(phones && phones->count() == 2 && phones->primaryIndex() == 1, "two telephone numbers");
    check(phones->labelAtIndex(0) == kZRPhoneHomeLabel && phones->valueAtIndex(0).asText() == "+49 30 123456",
        "the first of them");
    const auto groups = roster->groups();
    check(groups.size() == 1 && dynamic_cast<ZRGroup&>(*groups[0]).members() == found,
        "the group and its member");
}

} // namespace

int main(int argc, char** argv)
try {
    const auto roster = ZRRoster::sharedRoster();
    check(argc == 2 && roster, "the roster opens");
    argv[1] == std::string_view("write") ? writeAll(roster) : readAll(roster);
} catch (const std::exception& failure) {
    std::cerr << "not so: " << failure.what() << '\n';
    return 1;
}
