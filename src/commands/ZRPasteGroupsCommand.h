// Groups that are pasted.
#pragma once

#include "commands/ZRGroupMakingCommand.h"

#include <memory>
#include <string_view>
#include <vector>

namespace platform {
class Pasteboard;
} // namespace platform

/// Groups from the pasteboard.
///
/// Each is a new group, under a name that no other has. Its members are those who are in the roster, or whose
/// copies were pasted before.
///
/// Ownership, Threads, Errors: as ZRCommand.
class ZR_EXPORT ZRPasteGroupsCommand final : public ZRGroupMakingCommand {
public:
    /// Pastes what `pasteboard` holds when the command is done.
    ZRPasteGroupsCommand(
        platform::Ref<ZRRoster> roster = nullptr, std::shared_ptr<platform::Pasteboard> pasteboard = nullptr);

    /// False when no group is there.
    bool doIt() override;
    ZRRecordList madeGroups() const override { return _groups; }
    /// Whether a group of the roster has that name.
    bool containsGroupName(std::string_view name) const;

private:
    ~ZRPasteGroupsCommand() override;

    std::string unusedName(const std::string& name) const;
    platform::Ref<ZRGroup> pastedGroup(std::string_view uniqueId, const platform::Value& dictionary);

    ZRRecordList _groups;
    const std::shared_ptr<platform::Pasteboard> _pasteboard;
};
