// Cards and groups that are deleted.
#pragma once

#include "commands/RecordKeeping.h"
#include "commands/ZRCommand.h"

/// The removal of records from their roster.
///
/// They come back with all that they were: pictures, groups, members, which of them was Me.
///
/// Ownership, Threads, Errors: as ZRCommand.
class ZR_EXPORT ZRDeleteRecordsCommand final : public ZRCommand {
public:
    /// `selectedGroup`: what the user saw them in.
    ZRDeleteRecordsCommand(
        platform::Ref<ZRGroup> selectedGroup, ZRRecordList records, platform::Ref<ZRRoster> roster = nullptr);

    /// For a removal that somebody else makes: gathers what it takes away, and must be called before. The
    /// command is then undone as if it had been done.
    void keepRecords();

    /// False when none of the records is in the roster.
    bool doIt() override;
    void undoIt() override;
    void redoIt() override;

    const ZRRecordList& deletedPeople() const { return _deletedPeople; }
    const ZRRecordList& deletedGroups() const { return _deletedGroups; }

private:
    ~ZRDeleteRecordsCommand() override;

    void _removeRecords();
    void noteKept(std::vector<KeptRecord> kept);

    const platform::Ref<ZRGroup> _selectedGroup;
    const ZRRecordList _records;
    ZRRecordList _deletedPeople;
    ZRRecordList _deletedGroups;
    std::vector<KeptRecord> _kept;
};
