// Who joins a group.
#pragma once

#include "commands/ZRGroupCommand.h"

class ZRDeleteRecordsCommand;

/// Records that join a group.
///
/// One that does not fit the group, because one of them came with a subscription, is copied for it; a group
/// is copied with all that is in it. Nothing is copied twice for one command.
///
/// Ownership, Threads, Errors: as ZRCommand.
class ZR_EXPORT ZRAddToGroupCommand final : public ZRGroupCommand {
public:
    ZRAddToGroupCommand(
        platform::Ref<ZRGroup> group, ZRRecordList records, platform::Ref<ZRRoster> roster = nullptr);

    /// False without a group, and when all records are in it already.
    bool doIt() override;
    void undoIt() override;
    void redoIt() override;

private:
    ~ZRAddToGroupCommand() override;

    /// Copies by the id of their source.
    struct AssimilatedMap;
    ZRAddToGroupCommand(platform::Ref<ZRGroup> group, ZRRecordList records, platform::Ref<ZRRoster> roster,
        std::shared_ptr<AssimilatedMap> map);
    template <class T, class... Arguments>
    friend platform::Ref<T> platform::makeRef(Arguments&&...);

    void assimilateRecords();
    platform::Ref<ZRRecord> assimilated(const platform::Ref<ZRRecord>& record);
    void joinAndTell();

    platform::Ref<ZRDeleteRecordsCommand> _deleteAssimilatedRecordsCommand;
    std::vector<platform::Ref<ZRAddToGroupCommand>> _assimilatedSubgroupCommands;
    const std::shared_ptr<AssimilatedMap> _assimilatedMap;
    /// Those that this command made, and did not find in the map.
    ZRRecordList _copies;
};
