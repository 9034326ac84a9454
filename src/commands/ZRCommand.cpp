// What all commands share: their roster, their undo manager, and how they get there.
#include "commands/ZRCommand.h"

#include "commands/ApplicationHost.h"
#include "commands/ZRUndoer.h"
#include "core/ZRFailure.h"
#include "core/ZRFrameworkBundle.h"
#include "platform/run/Log.h"
#include "store/ZRDBCache.h"
#include "store/ZRManagedObjectContext.h"

#include <fmt/format.h>

#include <map>
#include <string>

using platform::Ref;

namespace {

void logThatSubclassMust(std::string_view operation)
{
    platform::log(fmt::format("-[ZRCommand {}] must be implemented by subclass", operation));
}

} // namespace

ZRCommand::ZRCommand(Ref<ZRRoster> roster) : _roster(std::move(roster)) { }
ZRCommand::~ZRCommand() = default;

Ref<ZRRoster> ZRCommand::roster() const { return _roster ? _roster : ZRRoster::sharedRoster(); }

ZRRoster& ZRCommand::rosterInUse() const
{
    // Whoever asks has a share of it: the command, or the process of the shared one.
    const auto roster = this->roster();
    zrRequire(bool(roster), "roster != nil");
    return *roster;
}

UndoManager* ZRCommand::_undoManager() const
{
    const auto roster = this->roster();
    const auto context = roster ? roster->managedObjectContext() : nullptr;
    return context ? dynamic_cast<UndoManager*>(context->undoManager()) : nullptr;
}

Ref<ZRUndoer> ZRCommand::undoer() const
{
    static const auto* const one = new auto([this] {
        auto* const manager = _undoManager();
        return platform::makeRef<ZRUndoer>(
            manager ? manager->weak_from_this() : std::weak_ptr<UndoManager>());
    }());
    return *one;
}

const ZRBundle& ZRCommand::bundle() { return ZRFrameworkBundle(); }

bool ZRCommand::doIt()
{
    logThatSubclassMust("doIt");
    return false;
}

void ZRCommand::undoIt() { logThatSubclassMust("undoIt"); }
void ZRCommand::redoIt() { logThatSubclassMust("redoIt"); }

bool ZRCommand::performWithActionName(std::string_view key)
{
    if (!doIt())
        return false;
    registerUndoWithActionName(key);
    return true;
}

void ZRCommand::registerUndoWithActionName(std::string_view key)
{
    try {
        const std::string name = bundle().localizedString(key, "ZRStrings");
        undoer()->registerUndo(Ref<ZRCommand>(this), name);
    } catch (const std::exception& failure) {
        platform::log(fmt::format("{}", failure.what()));
    }
}

ZRDBCache& ZRCommand::cache()
{
    if (!_cache)
        _cache = ApplicationHost::shared()->listsOf(rosterInUse());
    return *_cache;
}

void ZRCommand::tellAddedPeople(const ZRRecordList& people)
{
    std::map<std::string, ZRRecordList> peopleByLocation;
    for (const auto& person : people)
        peopleByLocation[person->remoteLocation()].push_back(person);
    for (const auto& [location, some] : peopleByLocation)
        cache().addedMembers(some);
}

void ZRCommand::saveIfWanted()
{
    if (_save)
        cache().nonThreadedSave();
}

void ZRCommand::restoreSelection(const Ref<ZRGroup>& group, const ZRRecordList& members)
{
    cache().updateGroupSelection(group);
    cache().updateMembersSelection(members);
}
