// How cards are shown as people or as companies, and back.
#include "commands/ZRShowAsCommand.h"

#include "core/PersonFlags.h"
#include "core/ZRConstants.h"
#include "store/ZRDBCache.h"

#include <algorithm>
#include <iterator>

using platform::Ref;
using platform::Value;

namespace {

std::int64_t flagsOf(const ZRRecord& person)
{
    return person.valueForProperty(zr::kZRPersonFlags).asInteger();
}

void show(ZRRecord& person, std::int64_t type)
{
    person.setValue(Value((flagsOf(person) & ~personFlags::kShowAsMask) | type), zr::kZRPersonFlags);
}

bool changes(const ZRRecord& record, std::int64_t type)
{
    return dynamic_cast<const ZRPerson*>(&record) && (flagsOf(record) & personFlags::kShowAsMask) != type;
}

} // namespace

ZRShowAsCommand::ZRShowAsCommand(
    ZRRecordList selectedMembers, Ref<ZRGroup> selectedGroup, std::int64_t personType, Ref<ZRRoster> roster)
    : ZRCommand(std::move(roster))
    , _selectedMembers(std::move(selectedMembers))
    , _selectedGroup(std::move(selectedGroup))
    , _personType(personType)
{
}

ZRShowAsCommand::~ZRShowAsCommand() = default;

bool ZRShowAsCommand::doIt()
{
    for (auto member = _selectedMembers.rbegin(); member != _selectedMembers.rend();) {
        if (changes(**member, _personType)) {
            show(**member, _personType);
            ++member;
        } else {
            member = std::make_reverse_iterator(_selectedMembers.erase(std::next(member).base()));
        }
    }
    if (_selectedMembers.empty())
        return false;
    cache().changedMembers(_selectedMembers);
    saveIfWanted();
    return true;
}

void ZRShowAsCommand::undoIt() { _showAs(); }
void ZRShowAsCommand::redoIt() { _showAs(); }

void ZRShowAsCommand::_showAs()
{
    restoreSelection(_selectedGroup, _selectedMembers);
    _personType = _personType == 0 ? 1 : 0;
    for (const auto& member : _selectedMembers)
        show(*member, _personType);
    cache().changedMembers(_selectedMembers);
    saveIfWanted();
}
