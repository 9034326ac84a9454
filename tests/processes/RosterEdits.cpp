// How random edits are made and told.
#include "processes/RosterEdits.h"

#include "objectstore/StoreErrors.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRProcessSharedLock.h"

#include <unistd.h>

namespace test {

namespace {

constexpr std::string_view kCardTexts[]{
    zr::kZRFirstNameProperty, zr::kZRLastNameProperty, zr::kZRJobTitleProperty, zr::kZRNoteProperty};
/// Every so many saves take the file lock, and every so many others the process-shared one.
constexpr int kSavesPerLock = 4;

Json listOf(const ZRMultiValue& values, ZRIndex index)
{
    return {values.identifierAtIndex(index), values.labelAtIndex(index),
        std::string(values.valueAtIndex(index).asText())};
}

/// What changed from `before` (null: nothing) to `after`.
Json entriesEdit(const std::string& card, const ZRMultiValue* before, const ZRMultiValue& after)
{
    Json edit{{"entries", card}, {"removed", Json::array()}, {"changed", Json::array()},
        {"added", Json::array()}, {"primary", nullptr}};
    for (ZRIndex i = 0; before && i < before->count(); ++i)
        if (after.indexForIdentifier(before->identifierAtIndex(i)) == kZRNotFound)
            edit["removed"].push_back(before->identifierAtIndex(i));
    for (ZRIndex i = 0; i < after.count(); ++i) {
        const ZRIndex known = before ? before->indexForIdentifier(after.identifierAtIndex(i)) : kZRNotFound;
        if (known == kZRNotFound)
            edit["added"].push_back(listOf(after, i));
        else if (listOf(*before, known) != listOf(after, i))
            edit["changed"].push_back(listOf(after, i));
    }
    const auto primary = after.primaryIdentifier();
    if (primary && (!before || before->primaryIdentifier() != primary))
        edit["primary"] = *primary;
    return edit;
}

} // namespace

PlainRecord plainRecord(ZRRecord& record)
{
    PlainRecord plain;
    const auto text = [&](std::string_view property) {
        if (const Value value = record.valueForProperty(property); value.isString())
            plain.texts[std::string(property)] = value.asText();
    };
    if (auto* group = dynamic_cast<ZRGroup*>(&record)) {
        text(zr::kZRGroupNameProperty);
        for (const auto& member : group->members())
            plain.members.insert(member->uniqueId());
        return plain;
    }
    for (const auto property : kCardTexts)
        text(property);
    const Value emails = record.valueForProperty(zr::kZREmailProperty);
    if (const auto* entries = emails.as<ZRMultiValue>()) {
        for (ZRIndex i = 0; i < entries->count(); ++i)
            plain.entries.push_back({entries->identifierAtIndex(i), entries->labelAtIndex(i),
                std::string(entries->valueAtIndex(i).asText())});
        plain.primary = entries->primaryIdentifier().value_or("");
    }
    return plain;
}

Lines fetchedLines(ZRRoster& roster)
{
    Lines lines;
    for (const auto& list : {roster.people(), roster.groups()})
        for (const auto& record : list)
            lines[record->uniqueId()] = plainRecord(*record).line();
    return lines;
}

RosterEditor::RosterEditor(Ref<ZRRoster> roster, const std::string& logPath, unsigned seed)
    : _roster(std::move(roster)), _log(logPath), _random(seed)
{
    lookAround();
}

void RosterEditor::save(const std::function<void(Edits&)>& change)
{
    const auto turn = platform::makeRef<ZRProcessSharedLock>("org.quillon.Roster.ManyProcesses");
    const bool takesTurn = _saves % kSavesPerLock == 1;
    if (takesTurn)
        turn->lock();
    locked(*_roster, ZRAccess::write, [&]() ZR_NTS {
        Edits edits;
        change(edits);
        noteNumber(edits);
        _log.begin(edits);
        if (!_roster->nts_SaveWithFileLock(_saves % kSavesPerLock == 0, false, Value()))
            throw std::runtime_error("a save was refused: " + _roster->lastSaveError().text);
        _log.saved(_roster->managedObjectContext()->lastSeenCommit());
    });
    if (takesTurn)
        turn->unlock();
}

void RosterEditor::prepare(int cards, int groups)
{
    save([&](Edits& edits) {
        for (int i = 0; i < cards; ++i)
            add(Kind::card, edits);
        for (int i = 0; i < groups; ++i)
            add(Kind::group, edits);
    });
}

void RosterEditor::editAndSave()
{
    constexpr std::size_t savesPerLook = 5;
    if (below(savesPerLook) == 0)
        lookAround();
    save([this](Edits& edits) { editRandomly(edits); });
}

Lines RosterEditor::heldLines()
{
    Lines lines;
    for (const auto& [id, record] : _held)
        lines[id] = plainRecord(*record).line();
    return lines;
}

void RosterEditor::lookAround()
{
    for (const auto& list : {_roster->people(), _roster->groups()})
        for (const auto& record : list)
            hold(record);
}

void RosterEditor::hold(const Ref<ZRRecord>& record)
{
    if (!_held.emplace(record->uniqueId(), record).second)
        return;
    if (platform::refCast<ZRGroup>(record))
        _groups.push_back(record);
    else if (!record->valueForProperty(zr::kZRLastNameProperty).asText().starts_with(kNumberCard))
        _cards.push_back(record);
}

/// Half of the edits go to few records, so that processes meet there. Null when the one picked is gone.
Ref<ZRRecord> RosterEditor::pick(Kind kind)
{
    constexpr std::size_t few = 6;
    const auto& all = kind == Kind::card ? _cards : _groups;
    const auto record = all.at(below(below(2) ? std::min(few, all.size()) : all.size()));
    return plainRecord(*record).isEmpty() ? nullptr : record;
}

Ref<ZRRecord> RosterEditor::add(Kind kind, Edits& edits)
{
    const Ref<ZRRecord> record = kind == Kind::card ? Ref<ZRRecord>(ZRPerson::initWithRoster(_roster))
                                                    : Ref<ZRRecord>(ZRGroup::initWithRoster(_roster));
    edits.push_back({{"add", record->uniqueId()}});
    set(*record, kind == Kind::card ? zr::kZRFirstNameProperty : zr::kZRGroupNameProperty, word(), edits);
    hold(record);
    return record;
}

void RosterEditor::set(ZRRecord& record, std::string_view property, const std::string& value, Edits& edits)
{
    record.setValue(Value(value), property);
    edits.push_back({{"set", record.uniqueId()}, {"property", property}, {"value", value}});
}

void RosterEditor::noteNumber(Edits& edits)
{
    if (!_number) {
        _number = ZRPerson::initWithRoster(_roster);
        edits.push_back({{"add", _number->uniqueId()}});
        set(*_number, zr::kZRLastNameProperty, kNumberCard + std::to_string(::getpid()), edits);
        hold(_number);
    }
    set(*_number, zr::kZRJobTitleProperty, std::to_string(++_saves), edits);
}

/// What was deleted elsewhere in the midst of an edit cannot be written any more: then nothing was edited.
void RosterEditor::editRandomly(Edits& edits)
{
    try {
        switch (below(10)) {
        case 0:
            add(below(4) ? Kind::card : Kind::group, edits);
            break;
        case 1:
            remove(edits);
            break;
        case 2:
        case 3:
        case 4:
            editText(edits);
            break;
        case 5:
        case 6:
            editMembers(edits);
            break;
        default:
            editEntries(edits);
        }
    } catch (const objectstore::InaccessibleObject&) {
        edits.clear();
    }
}

void RosterEditor::editText(Edits& edits)
{
    if (const auto card = pick(Kind::card); card && below(8))
        set(*card, kCardTexts[below(std::size(kCardTexts))], word(), edits);
    else if (const auto group = pick(Kind::group))
        set(*group, zr::kZRGroupNameProperty, word(), edits);
}

void RosterEditor::editEntries(Edits& edits)
{
    const auto card = pick(Kind::card);
    if (!card)
        return;
    const Value value = card->valueForProperty(zr::kZREmailProperty);
    const auto* before = value.as<ZRMultiValue>();
    const auto after = before ? before->mutableCopy() : platform::makeRef<ZRMutableMultiValue>();
    const auto count = static_cast<std::size_t>(after->count());
    const auto index = static_cast<ZRIndex>(count > 0 ? below(count) : 0);
    switch (count > 0 ? below(6) : 0) {
    case 1:
        after->removeValueAndLabelAtIndex(index);
        break;
    case 2:
        after->replaceValueAtIndex(index, Value(word()));
        break;
    case 3:
        after->setPrimaryIdentifier(after->identifierAtIndex(index));
        break;
    default:
        after->addValue(Value(word()), zr::kZREmailWorkLabel);
    }
    card->setValue(Value(after), zr::kZREmailProperty);
    edits.push_back(entriesEdit(card->uniqueId(), before, *after));
}

void RosterEditor::editMembers(Edits& edits)
{
    const auto group = platform::refCast<ZRGroup>(pick(Kind::group));
    const auto card = platform::refCast<ZRPerson>(pick(Kind::card));
    if (!group || !card)
        return;
    const bool joins = below(3) > 0;
    joins ? group->addMember(*card) : group->removeMember(*card);
    edits.push_back({{joins ? "join" : "leave", group->uniqueId()}, {"card", card->uniqueId()}});
}

void RosterEditor::remove(Edits& edits)
{
    if (const auto record = pick(below(6) ? Kind::card : Kind::group)) {
        _roster->removeRecord(record);
        edits.push_back({{"remove", record->uniqueId()}});
    }
}

} // namespace test
