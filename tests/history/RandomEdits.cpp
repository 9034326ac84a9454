// The changes that there are to choose from.
#include "history/RandomEdits.h"

#include "core/ZRGroup.h"
#include "core/ZRMutableMultiValue.h"
#include "search/ZRSearchElement.h"
#include "search/ZRSmartGroup.h"

#include <fmt/format.h>

#include <algorithm>
#include <random>
#include <stdexcept>

namespace test {

namespace {

/// One roster and the dice.
class Editor {
public:
    Editor(Ref<ZRRoster> roster, std::uint32_t seed) : _roster(std::move(roster)), _random(seed) { }

    void edit()
    {
        using Edit = void (Editor::*)();
        constexpr Edit edits[] = {&Editor::addCard, &Editor::addCard, &Editor::changeCard,
            &Editor::changeCard, &Editor::changeEntries, &Editor::changeEntries, &Editor::removeCard,
            &Editor::addGroup, &Editor::fillGroup, &Editor::fillGroup, &Editor::emptyGroup,
            &Editor::chooseEntry, &Editor::chooseEntry, &Editor::renameGroup, &Editor::removeGroup,
            &Editor::nestGroup, &Editor::chooseMe, &Editor::changePicture, &Editor::changePicture,
            &Editor::setCustomValue, &Editor::makeSmartGroup, &Editor::severalSaves};
        (this->*edits[dice(std::size(edits))])();
        save();
    }

private:
    std::size_t dice(std::size_t sides)
    {
        return std::uniform_int_distribution<std::size_t>(0, sides - 1)(_random);
    }

    std::string word() { return fmt::format("word{}", dice(10'000)); }

    void save()
    {
        if (!_roster->save())
            throw std::runtime_error(_roster->lastSaveError().text);
    }

    /// In the order of their ids, so that the same dice mean the same record.
    template <class Kind>
    Ref<Kind> any(ZRRecordList records)
    {
        std::erase_if(records, [](const auto& record) { return !dynamic_cast<Kind*>(record.get()); });
        std::ranges::sort(records, {}, [](const auto& record) { return record->uniqueId(); });
        return records.empty() ? nullptr : platform::refCast<Kind>(records[dice(records.size())]);
    }
    Ref<ZRPerson> anybody() { return any<ZRPerson>(_roster->people()); }
    Ref<ZRGroup> anyGroup()
    {
        ZRRecordList groups = _roster->groups();
        std::erase_if(groups, [](const auto& group) { return dynamic_cast<ZRSmartGroup*>(group.get()); });
        return any<ZRGroup>(std::move(groups));
    }

    Value entries(std::size_t most)
    {
        std::vector<Entry> list;
        const std::string_view labels[] = {kZRWorkLabel, kZRHomeLabel, "holiday"};
        for (std::size_t count = dice(most) + 1; count > 0; --count)
            list.push_back({Value(word() + "@example.com"), labels[dice(3)]});
        return multiValue(list, static_cast<ZRIndex>(dice(list.size())));
    }

    Value picture() { return Value::data(fmt::format("picture {}{}", word(), std::string(dice(4000), 'p'))); }

    void addCard()
    {
        const auto made = person(_roster,
            {{kZRFirstNameProperty, Value(word())}, {kZRLastNameProperty, Value(word())},
                {kZREmailProperty, entries(4)}, {kZRPhoneProperty, entries(3)},
                {kZRNoteProperty, Value("a note: " + word())},
                {kZRAddressProperty,
                    multiValue({{Value::dictionary({{kZRAddressStreetKey, Value(word())},
                                     {kZRAddressCityKey, Value(word())}}),
                        kZRHomeLabel}})},
                {kZRAIMInstantProperty, entries(2)}});
        if (dice(2) == 0)
            made->setImageData(picture());
    }

    void changeCard()
    {
        const auto card = anybody();
        if (!card)
            return addCard();
        card->setValue(Value(word()), kZRFirstNameProperty);
        if (dice(2) == 0)
            card->setValue(Value(), kZRNoteProperty);
        if (dice(2) == 0)
            card->setValue(
                Value(platform::Date{static_cast<double>(dice(1'000'000'000))}), kZRBirthdayProperty);
    }

    /// Entries are added and taken out beside those that keep their identifiers.
    void changeEntries()
    {
        const auto card = anybody();
        if (!card)
            return addCard();
        const auto now = card->valueForProperty(kZREmailProperty);
        const auto* const list = now.as<ZRMultiValue>();
        if (!list || list->count() == 0)
            return card->setValue(entries(3), kZREmailProperty), void();
        const auto changed = list->mutableCopy();
        if (dice(2) == 0)
            changed->removeValueAndLabelAtIndex(
                static_cast<ZRIndex>(dice(static_cast<std::size_t>(list->count()))));
        changed->addValue(Value(word()), kZRWorkLabel);
        card->setValue(Value(changed), kZREmailProperty);
    }

    void removeCard()
    {
        if (const auto card = anybody())
            _roster->removeRecord(card);
    }

    void addGroup()
    {
        const auto group = ZRGroup::initWithRoster(_roster);
        group->setValue(Value("group " + word()), kZRGroupNameProperty);
        if (const auto card = anybody())
            group->addMember(*card);
    }

    void fillGroup()
    {
        const auto group = anyGroup();
        for (int i = 0; group && i < 3; ++i)
            if (const auto card = anybody())
                group->addMember(*card);
    }

    void emptyGroup()
    {
        const auto group = anyGroup();
        if (const auto member = group ? any<ZRPerson>(group->members()) : nullptr)
            group->removeMember(*member);
    }

    void chooseEntry()
    {
        const auto group = anyGroup();
        const auto member = group ? any<ZRPerson>(group->members()) : nullptr;
        const Value emails = member ? member->valueForProperty(kZREmailProperty) : Value();
        const auto* const list = emails.as<ZRMultiValue>();
        if (list && list->count() > 0)
            group->setDistributionIdentifier(
                list->identifierAtIndex(static_cast<ZRIndex>(dice(static_cast<std::size_t>(list->count())))),
                kZREmailProperty, *member);
    }

    void renameGroup()
    {
        if (const auto group = anyGroup())
            group->setValue(Value("renamed " + word()), kZRGroupNameProperty);
    }

    void removeGroup()
    {
        if (const auto group = any<ZRGroup>(_roster->groups()))
            _roster->removeRecord(group);
    }

    void nestGroup()
    {
        const auto outer = anyGroup(), inner = anyGroup();
        if (outer && inner)
            outer->addSubgroup(*inner);
    }

    void chooseMe() { _roster->setMe(dice(4) == 0 ? nullptr : anybody()); }

    void changePicture()
    {
        if (const auto card = anybody())
            card->setImageData(dice(4) == 0 ? Value() : picture());
    }

    void setCustomValue()
    {
        const std::string property = fmt::format("org.example.custom{}", dice(3));
        ZRPerson::addPropertiesAndTypes(
            Value::dictionary({{property, Value(static_cast<std::int64_t>(kZRPropertyTypeString))}}),
            _roster.get());
        if (const auto card = anybody())
            card->setValue(Value(word()), property);
    }

    void makeSmartGroup()
    {
        const auto group = ZRSmartGroup::initWithRoster(_roster);
        group->setValue(Value("smart " + word()), kZRGroupNameProperty);
        group->setSearchElement(ZRPerson::searchElementForProperty(
            kZRFirstNameProperty, {}, {}, Value(word()), kZREqualCaseInsensitive));
    }

    /// One verb in several transactions, which touch the same records again.
    void severalSaves()
    {
        addCard();
        addGroup();
        save();
        changeCard();
        fillGroup();
        save();
        removeCard();
    }

    Ref<ZRRoster> _roster;
    std::mt19937 _random;
};

} // namespace

void editAtRandom(const Ref<ZRRoster>& roster, std::uint32_t seed) { Editor(roster, seed).edit(); }

} // namespace test
