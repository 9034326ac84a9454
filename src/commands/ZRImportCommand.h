// The undo of an import: who came, who was updated, who made way.
#pragma once

#include "commands/RecordKeeping.h"
#include "commands/ZRCommand.h"
#include "platform/value/Value.h"

#include <vector>

class ZRDeleteRecordsCommand;
class ZRGroupCommand;

/// An import as one step, made by whoever imported, after the cards are in the roster.
///
/// Ownership, Threads, Errors: as ZRCommand.
class ZR_EXPORT ZRImportCommand final : public ZRCommand {
public:
    /// What an import did.
    struct Work {
        /// What the user saw, and whom `_addedToGroup` joined; absent or a special group: nobody joined one.
        platform::Ref<ZRGroup> selectedGroup;
        /// Who was no member of that group before.
        ZRRecordList addedToGroup;
        ZRRecordList updatedPeople;
        /// What each of them was before, in step, as `allPropertiesIncludingImage` says it
        /// (commands/RecordKeeping.h).
        std::vector<platform::Value> updatedPeopleProperties;
        ZRRecordList addedPeople;
        /// The removal of cards that were merged into others, and how those joined their groups. Absent:
        /// none.
        platform::Ref<ZRDeleteRecordsCommand> deletePeopleCommand;
        std::vector<platform::Ref<ZRGroupCommand>> mergedIntoGroupsCommands;
        /// Whether these two were done with the rest of the import. Otherwise `doIt` does them.
        bool nestedCommandsAreDone = false;
    };

    explicit ZRImportCommand(Work work, platform::Ref<ZRRoster> roster = nullptr);

    /// Makes the added people the last import, tells the lists, and saves. False for an import that did
    /// nothing.
    bool doIt() override;
    void undoIt() override;
    void redoIt() override;

private:
    ~ZRImportCommand() override;

    void doNestedCommands();
    void rememberLastImport();
    void swapUpdatedPeople();
    void showAll();

    const platform::Ref<ZRGroup> _selectedGroup;
    const ZRRecordList _addedToGroup;
    const ZRRecordList _updatedPeople;
    std::vector<platform::Value> _updatedPeopleProperties;
    const ZRRecordList _addedPeople;
    /// What of them is to come back.
    std::vector<KeptRecord> _keptPeople;
    const platform::Ref<ZRDeleteRecordsCommand> _deletePeopleCommand;
    const std::vector<platform::Ref<ZRGroupCommand>> _mergedIntoGroupsCommands;
    const bool _nestedCommandsAreDone;
};
