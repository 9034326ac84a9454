// Steps of the history: what tests/history walks, made of commands, merges and plain edits.
#include "history/RandomEdits.h"
#include "merge/MergeKinds.h"
#include "store/ZRRoster.h"

namespace test {

namespace {

/// Entries come and go beside those that keep their identifiers.
bool changeEntries(CommandDriver& driver)
{
    const auto card = driver.somebody();
    const Value before = card ? card->valueForProperty(kZREmailProperty) : Value();
    const auto* const entries = before.as<ZRMultiValue>();
    if (!entries || entries->count() == 0)
        return false;
    const auto changed = entries->mutableCopy();
    if (driver.maybe(50))
        changed->removeValueAndLabelAtIndex(
            static_cast<ZRIndex>(driver.number(static_cast<std::size_t>(entries->count()))));
    changed->addValue(Value(driver.word()), kZRWorkLabel);
    return card->setValue(Value(changed), kZREmailProperty);
}

bool chooseEntries(CommandDriver& driver)
{
    driver.chooseEntries();
    return true;
}

/// The property may be declared in this very step.
bool setCustomValue(CommandDriver& driver)
{
    const std::string property = "org.example.custom" + std::to_string(driver.number(3));
    ZRPerson::addPropertiesAndTypes(Value::dictionary({{property, Value(1)}}), driver.roster().get());
    const auto card = driver.somebody();
    return card && card->setValue(Value(driver.word()), property);
}

CommandDriver::Kinds allKindsWithEdits()
{
    auto kinds = allKindsWithMerges();
    for (int times = 0; times < 3; ++times) {
        kinds.emplace_back("change entries", changeEntries);
        kinds.emplace_back("choose entries", chooseEntries);
        kinds.emplace_back("set a custom value", setCustomValue);
    }
    return kinds;
}

} // namespace

void editAtRandom(const Ref<ZRRoster>& roster, std::uint32_t seed)
{
    ApplicationHost::install(std::make_shared<Forgetless>());
    {
        CommandDriver driver(roster, seed);
        if (roster->people().empty())
            populate(driver);
        const auto kinds = allKindsWithEdits();
        for (std::size_t left = 1 + driver.number(3); left > 0;)
            left -= kinds[driver.number(kinds.size())].second(driver) ? 1 : 0;
    }
    roster->save();
    ApplicationHost::install(nullptr);
}

} // namespace test
