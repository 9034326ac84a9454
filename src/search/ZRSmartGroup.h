// Groups whose members are not stored but found, and how they tell that their members have changed.
#pragma once

#include "core/ZRGroup.h"
#include "platform/value/Error.h"

#include <atomic>
#include <exception>
#include <optional>
#include <string>
#include <unordered_set>

/// Whether this process has looked after its date-related smart groups; see `ZRSmartGroup::isModified`.
extern ZR_EXPORT std::atomic<bool> __checkedSmartGroups;

/// Raised when the archived search of a smart group is damaged. (For one of a newer version see
/// ZRIncompatibleSearchElementVersionException.)
///
/// Ownership: owns its error.
/// Threads:   like any plain value.
/// Errors:    none.
class ZR_EXPORT ZRUnreadableSearchElement : public std::exception {
public:
    ZRUnreadableSearchElement(std::string_view groupId, platform::Error error);
    ~ZRUnreadableSearchElement() override;

    /// What the unarchiver said.
    const platform::Error& error() const noexcept { return _error; }
    const char* what() const noexcept override { return _text.c_str(); }

private:
    platform::Error _error;
    std::string _text;
};

/// A group whose members are whatever matches its search element at this moment.
///
/// It is no stored list: nobody can be put in or taken out, it has no subgroups, and what would do so is
/// refused. What it does store is whether its members have changed since somebody looked (`isModified`), and
/// who came in. That is found out between two calls of `members` on one handle, and, for searches that depend
/// on today's date, by `ZRRoster::updateDateRelatedSmartGroups`.
///
/// Ownership: as ZRRecord. It keeps no records alive, neither those found last nor groups that its search
///            names.
/// Threads:   as ZRRecord. `members` takes the lock for the search and again for the comparison with what was
///            found last.
/// Errors:    as ZRRecord. A search that cannot be read raises from `searchElement` and from whatever needs
///            it: ZRUnreadableSearchElement when damaged, ZRIncompatibleSearchElementVersionException when it
///            is of a newer version. Nothing has changed then; whoever walks many groups catches
///            std::exception for each.
class ZR_EXPORT ZRSmartGroup : public ZRGroup {
public:
    static const ZRRecordClass recordClassDescription;
    const ZRRecordClass& recordClass() const override { return recordClassDescription; }

    /// A new one in the shared roster, or in the one given; absent when there is none.
    static platform::Ref<ZRSmartGroup> init();
    static platform::Ref<ZRSmartGroup> initWithRoster(platform::Ref<ZRRoster> roster);
    /// All of the shared roster.
    static ZRRecordList smartGroups();

    // ---- what it looks for

    /// Absent when none was set.
    platform::Ref<ZRSearchElement> searchElement() const;
    platform::Ref<ZRSearchElement> nts_SearchElement() const ZR_NTS;
    /// Archives the element as it is now: a later change of it is not seen. Raises for an absent element, and
    /// for one that no archive can hold.
    void setSearchElement(const platform::Ref<ZRSearchElement>& element);
    void nts_SetSearchElement(const platform::Ref<ZRSearchElement>& element) ZR_NTS;

    // ---- who is in it

    /// The matching records. Unless this handle is asked for the first time, a difference from the last
    /// answer sets `isModified` and stores the ids of those that came in.
    ZRRecordList members() const override;
    /// The same without looking for differences.
    ZRRecordList _members() const;
    /// Empty without a search. Where a search that is made in memory leads back to this group, it has no
    /// members meanwhile.
    ZRRecordList nts_Members() const override ZR_NTS;
    ZRRecordList nts_Subgroups() const override ZR_NTS;
    /// Whether `members` has the record in it.
    bool _isSmartGroupParentOfRecord(const ZRRecord& record) const;

    // ---- whether that has changed

    /// Whether the user wants to be told. It matters to the refresh of groups that the store cannot be asked
    /// for; the others are looked after in any case.
    bool tracksModification() const;
    bool nts_TracksModification() const ZR_NTS;
    void setTracksModification(bool tracks);
    void nts_SetTracksModification(bool tracks) ZR_NTS;
    /// The first question of a process looks after all groups that depend on the date.
    bool isModified();
    bool nts_IsModified() ZR_NTS;
    void setIsModified(bool modified);
    void nts_SetIsModified(bool modified) ZR_NTS;

    // ---- what it refuses: nothing is changed

    bool nts_AddMember(ZRPerson& person) override ZR_NTS;
    bool nts_RemoveMember(ZRPerson& person) override ZR_NTS;
    bool nts_AddSubgroup(ZRGroup& group) override ZR_NTS;
    bool nts_RemoveSubgroup(ZRGroup& group) override ZR_NTS;
    bool setDistributionIdentifier(
        std::optional<std::string_view> identifier, std::string_view property, ZRPerson& person) override;
    bool nts_SetDistributionIdentifier(std::optional<std::string_view> identifier, std::string_view property,
        ZRPerson& person, bool allowFetching) override ZR_NTS;
    std::optional<std::string> distributionIdentifierForProperty(
        std::string_view property, const ZRPerson& person) const override;
    bool isPublishable() const override { return false; }

    // ---- dictionaries

    /// Id, class, and where they are set name, archived search and flags; no members.
    platform::Value dictionaryRepresentation() const override;
    /// A record of what such a dictionary says, under its id when it has one.
    static platform::Ref<ZRRecord> nts_RecordFromDictionaryRepresentation(const platform::Value& dictionary,
        const platform::Value& recordMapping, ZRRoster& roster, bool generateIds) ZR_NTS;
    /// Without core properties it takes from a dictionary only what `dictionaryRepresentation` puts there.
    bool nts_PopulateWithDictionary(const platform::Value& dictionary, const platform::Value& recordMapping,
        bool generateIds, bool includeCoreProperties, ZRRoster& roster) override ZR_NTS;

protected:
    ZRSmartGroup() = default;

private:
    friend struct ZRRecordClasses;
    using UniqueIds = std::unordered_set<std::string>;

    std::optional<std::vector<platform::Value>> nts_replaceCachedMembers(
        const ZRRecordList& now) const ZR_NTS;
    bool nts_hasFlag(std::int64_t flag) const ZR_NTS;
    void nts_setFlag(std::int64_t flag, bool isSet) ZR_NTS;

    /// The ids of those found by the last call of `members`; absent before the first. Ids, since a search may
    /// find groups, this one among them. Under the global lock.
    mutable std::optional<UniqueIds> _cachedMembers;
};
