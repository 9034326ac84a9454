// The group of those who came with the last import.
#pragma once

#include "core/ZRSpecialGroup.h"

namespace platform {
struct Notification;
} // namespace platform

/// Who came with the last import into the shared roster: one group for the whole process.
///
/// Its members are remembered by their ids in `LastImport.plist` in the roster's directory, read when the
/// group is first asked for them, and written by `saveLastImportContent`, which every save of the shared
/// roster calls. Without members there is no file.
///
/// Ownership: lives as long as the process, and keeps its members alive.
/// Threads:   as ZRRecord. What other processes delete is heard of on the main queue.
/// Errors:    as ZRSpecialGroup. A file that cannot be read is logged and counts as empty.
class ZR_EXPORT ZRLastImportGroup : public ZRSpecialGroup {
public:
    static const ZRRecordClass recordClassDescription;
    const ZRRecordClass& recordClass() const override { return recordClassDescription; }

    /// The one group, made at the first call; absent when there is no shared roster.
    static platform::Ref<ZRLastImportGroup> lastImportGroup();
    static platform::Ref<ZRLastImportGroup> init() { return lastImportGroup(); }
    static platform::Ref<ZRLastImportGroup> specialGroupForRoster(const platform::Ref<ZRRoster>& roster);

    ZRRecordList nts_Members() const override ZR_NTS;
    ZRRecordList nts_Subgroups() const override ZR_NTS { return {}; }
    ZRRecordList membersAndSubgroups() const override { return members(); }
    bool nts_HasMember(const ZRPerson& person) const ZR_NTS;
    /// False for a member, who stays one.
    bool nts_AddMember(ZRPerson& person) override ZR_NTS;
    /// False for one who is none.
    bool nts_RemoveMember(ZRPerson& person) override ZR_NTS;
    bool nts_AddSubgroup(ZRGroup&) override ZR_NTS { return false; }
    bool nts_RemoveSubgroup(ZRGroup&) override ZR_NTS { return false; }
    void clear();

    /// Reads the file, unless that was done.
    void loadContent();
    /// Writes or removes the file, when something has changed since. False when that cannot be done: the next
    /// call tries again.
    bool saveLastImportContent();
    /// The same for the one group; true where nobody has asked for it yet.
    static bool saveContentOfLastImportGroup() ZR_NTS;
    /// A change notice of this process or another: deleted people leave the group.
    void dataBaseChanged(const platform::Notification& notice);

    /// The name; nothing else.
    using ZRRecord::nts_ValueForProperty;
    platform::Value nts_ValueForProperty(std::string_view property) const override ZR_NTS;

protected:
    ZRLastImportGroup() = default;

private:
    friend struct ZRRecordClasses;

    std::string path() const;
    void nts_LoadContent() const ZR_NTS;
    bool nts_SaveContent() ZR_NTS;
    bool nts_RemoveFile() const ZR_NTS;
    std::vector<std::string> nts_MemberIds() const ZR_NTS;
    void nts_Drop(const std::unordered_set<std::string_view>& uniqueIds) ZR_NTS;
    /// Those of the ids that are people become the members.
    void nts_FindMembers(const std::vector<std::string>& ids) const ZR_NTS;

    mutable ZRRecordList _lastImports;
    /// The same, to tell whether somebody is one.
    mutable std::unordered_set<const ZRRecord*> _known;
    mutable bool _beenLoaded = false;
    mutable bool _hasChanged = false;
};
