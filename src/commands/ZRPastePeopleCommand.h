// Cards that are pasted.
#pragma once

#include "commands/RecordKeeping.h"
#include "commands/ZRCommand.h"

#include <memory>
#include <string_view>
#include <vector>

namespace platform {
class Pasteboard;
} // namespace platform

/// Cards from the pasteboard.
///
/// A card that is in the roster already joins the group that it is pasted into; any other is copied, under an
/// id of its own.
///
/// Ownership, Threads, Errors: as ZRCommand.
class ZR_EXPORT ZRPastePeopleCommand final : public ZRCommand {
public:
    /// Pastes what `pasteboard` holds when the command is done.
    ZRPastePeopleCommand(platform::Ref<ZRGroup> selectedGroup, platform::Ref<ZRRoster> roster = nullptr,
        std::shared_ptr<platform::Pasteboard> pasteboard = nullptr);

    /// False when no card is there.
    bool doIt() override;
    void undoIt() override;
    void redoIt() override;

    /// Who was copied, and who joined the group.
    const ZRRecordList& people() const { return _people; }
    const ZRRecordList& linkedPeople() const { return _linkedPeople; }

private:
    ~ZRPastePeopleCommand() override;

    bool hasRealGroup() const;
    platform::Ref<ZRPerson> copyOf(const platform::Value& dictionary);
    void paste(std::string_view uniqueId, const platform::Value& dictionary);
    ZRRecordList pastedPeople() const;
    void tellOfPasted();

    ZRRecordList _people;
    ZRRecordList _linkedPeople;
    std::vector<KeptRecord> _kept;
    const platform::Ref<ZRGroup> _selectedGroup;
    const std::shared_ptr<platform::Pasteboard> _pasteboard;
};
