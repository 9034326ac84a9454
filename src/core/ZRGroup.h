// Groups: who is in them, which groups are in them, and how each member is reached through them.
#pragma once

#include "core/ZRRecord.h"
#include "core/ZRTypes.h"

#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>

class ZRPerson;

namespace platform {
struct Error;
} // namespace platform

using ZRRecordSet = std::unordered_set<platform::Ref<ZRRecord>>;
/// Records of one batch by their unique ids.
using ZRRecordsById = std::map<std::string, platform::Ref<ZRRecord>, std::less<>>;

/// A stored group of people and of other groups. Members and subgroups are sets: their order means nothing.
///
/// For each member it may hold which entry of a multi-value (which e-mail address, which phone number) is
/// used when the group is addressed as a whole: its distribution list.
///
/// It is no container of its members: one that leaves, or whose group is deleted, stays in the roster.
/// Classes below it whose members are not stored answer `nts_Members` and `nts_Subgroups` in their own way
/// and refuse what they cannot do.
///
/// Ownership: as ZRRecord.
/// Threads:   as ZRRecord. Operations on lists take the lock for each element: others may see half of a list
///            done.
/// Errors:    as ZRRecord. What is refused answers false.
class ZR_EXPORT ZRGroup : public ZRRecord {
public:
    static const ZRRecordClass recordClassDescription;
    const ZRRecordClass& recordClass() const override { return recordClassDescription; }

    /// A new group in the shared roster, or in the one given; absent when there is none.
    static platform::Ref<ZRGroup> init();
    static platform::Ref<ZRGroup> initWithRoster(platform::Ref<ZRRoster> roster);

    std::string name() const;
    /// Whether it stands for records that are together for another reason than a row of the store.
    virtual bool isSpecialGroup() const { return false; }

    // ---- members

    virtual ZRRecordList members() const;
    /// All of them with a constant number of queries.
    virtual ZRRecordList nts_Members() const ZR_NTS;
    /// True when the person is a member then, whether or not it was before. A person that was removed from
    /// its roster is accepted, and nothing is stored. False for a person of another roster, for one that
    /// another process deleted, and when the group itself is gone.
    bool addMember(ZRPerson& person);
    virtual bool nts_AddMember(ZRPerson& person) ZR_NTS;
    /// True when the person is no member then.
    bool removeMember(ZRPerson& person);
    virtual bool nts_RemoveMember(ZRPerson& person) ZR_NTS;
    /// The same for many at once. Raises, with nothing changed, when one of them is no person. True when none
    /// was refused; a refused one keeps no other out. The error is not filled.
    bool addMembers(const ZRRecordList& people, platform::Error* error = nullptr);
    bool removeMembers(const ZRRecordList& people, platform::Error* error = nullptr);

    // ---- subgroups, one level deep

    ZRRecordList subgroups() const;
    virtual ZRRecordList nts_Subgroups() const ZR_NTS;
    /// False, with nothing changed, when either group contains the other at any depth: so also for the group
    /// itself, and for a group that is a subgroup already.
    bool addSubgroup(ZRGroup& group);
    virtual bool nts_AddSubgroup(ZRGroup& group) ZR_NTS;
    bool removeSubgroup(ZRGroup& group);
    virtual bool nts_RemoveSubgroup(ZRGroup& group) ZR_NTS;
    /// As `addMembers`.
    bool addSubgroups(const ZRRecordList& groups, platform::Error* error = nullptr);
    /// Passes over what is no group.
    bool removeSubgroups(const ZRRecordList& groups, platform::Error* error = nullptr);

    // ---- the tree                                                     (ZRGroup+Tree.cpp)
    // Processes that save at the same time can make a circle of groups. Every walk visits a group once.

    /// Whether the record is a member or a subgroup here, one level deep.
    bool _isParentGroupOfRecord(const ZRRecord& record) const;
    bool nts_IsParentGroupOfRecord(const ZRRecord& record) const ZR_NTS;
    /// Whether the group is below this one, at any depth. No group is below itself.
    bool recursiveContainsGroup(const ZRGroup& group) const;
    virtual bool nts_RecursiveContainsGroup(const ZRGroup& group) const ZR_NTS;
    /// The members, then the subgroups.
    virtual ZRRecordList membersAndSubgroups() const;
    /// All records below this one: members and subgroups, their members and subgroups, and so on.
    ZRRecordSet allAssociatedMembersAndSubgroups() const { return allAssociatedMembersAndSubgroups(false); }
    /// The same. The flag asks to skip groups that were visited, which changes no answer: it is kept for
    /// callers.
    ZRRecordSet allAssociatedMembersAndSubgroups(bool skipsVisitedGroups) const;
    /// The members of this group and of all groups below it.
    ZRRecordSet nts_MembersRecursive() const ZR_NTS;
    /// Takes the group out of its parents, and everything out of the group; members and subgroups live on.
    void nts_CascadeRemove() override ZR_NTS;

    // ---- how members are reached                                      (ZRGroup+Distribution.cpp)

    /// Chooses the entry by which the person is reached as a member. False, with nothing changed, for an
    /// absent identifier, one that is not in the person's multi-value, and a property for which groups keep
    /// no choice (they do for e-mail, phone and address). Raises for a property that is no multi-value.
    virtual bool setDistributionIdentifier(
        std::optional<std::string_view> identifier, std::string_view property, ZRPerson& person);
    virtual bool nts_SetDistributionIdentifier(std::optional<std::string_view> identifier,
        std::string_view property, ZRPerson& person, bool allowFetching) ZR_NTS;
    /// Which of the person's entries is used to reach it as a member: the chosen one, else the primary one;
    /// absent when it has none. Raises for a property that is no multi-value.
    virtual std::optional<std::string> distributionIdentifierForProperty(
        std::string_view property, const ZRPerson& person) const;
    /// The place of that entry; kZRNotFound without one.
    ZRIndex distributionIndexForProperty(std::string_view property, const ZRPerson& person) const;
    /// The value of that entry; absent without one.
    platform::Value distributionValueForProperty(std::string_view property, const ZRPerson& person) const;
    /// "Name <address>" for each person in this group and below it; people without an address are left out.
    /// Somebody who is in several groups comes once for each.
    std::vector<std::string> distributionStringsForMembers() const;

    // ---- sharing and permissions

    /// Whether the group may be published: not when it came from somebody else.
    virtual bool isPublishable() const;
    bool isReadOnly() const override { return isReadOnlyIgnoresInert(false); }
    /// The roster's answer, and for a subscribed group whether nobody may write to its source.
    bool isReadOnlyIgnoresInert(bool ignoresInert) const;

    // ---- dictionaries                                                 (ZRGroup+Dictionaries.cpp)

    /// Id, class and name; with members their ids and how they are reached; with subgroups their ids.
    platform::Value dictionaryRepresentation() const override;
    /// A new group with what such a dictionary says, in the shared roster or in the one given; absent when
    /// there is no roster. Members and subgroups that the roster does not have are logged and left out.
    static platform::Ref<ZRGroup> addGroupFromDictionary(const platform::Value& dictionary);
    static platform::Ref<ZRGroup> addGroupFromDictionary(
        const platform::Value& dictionary, platform::Ref<ZRRoster> roster);
    /// Adds the members and subgroups that a dictionary names. `recordMapping` is a dictionary from ids as
    /// they stand there to those that took their place; records are looked for in `recordsByUniqueId` first.
    void nts_AddMembersAndSubgroupsFromDictionaryRepresentation(const platform::Value& dictionary,
        const platform::Value& recordMapping, const ZRRecordsById& recordsByUniqueId) ZR_NTS;

    // ---- as vCards                                                (interchange/vcard/ZRGroup+VCard.cpp)
    // The cards of the members, then of the subgroups, one behind the other. Somebody who is in several of
    // these groups comes once for each; groups in a circle end where it closes.

    /// vCard 3.0 in UTF-8; absent when a text is no Unicode.
    std::optional<std::string> _vCardRepresentation() const;
    std::string _vCardRepresentationAsString() const;
    std::string _vCardRepresentationAsStringUsingImageCache(const platform::Value& imageCache) const;
    std::string _21vCardRepresentationAsData() const;

    // ---- what the class declares

    static std::int64_t addPropertiesAndTypes(const platform::Value& typesByName);
    static std::int64_t addPropertiesAndTypes(const platform::Value& typesByName, ZRRoster* roster);
    static std::int64_t addPropertiesAndTypes(
        const platform::Value& typesByName, ZRRoster* roster, bool acquireLock);
    static std::int64_t addPropertiesAndTypes(
        const platform::Value& typesByName, ZRRoster* roster, bool acquireLock, bool save);
    static std::int64_t removeProperties(const platform::Value& names);

    // ---- searching                                                     (search/ZRRecord+Search.cpp)

    /// A search for groups by one property; an absent property is the name. See ZRSearchElementMatch.
    static platform::Ref<ZRSearchElement> searchElementForProperty(std::optional<std::string_view> property,
        std::optional<std::string_view> label, std::optional<std::string_view> key,
        const platform::Value& value, ZRSearchComparison comparison);

protected:
    ZRGroup() = default;

private:
    friend struct ZRRecordClasses;
};

/// A group that came with a subscription.
class ZR_EXPORT ZRSubscribedGroup : public ZRGroup {
public:
    static const ZRRecordClass recordClassDescription;
    const ZRRecordClass& recordClass() const override { return recordClassDescription; }
    static platform::Ref<ZRSearchElement> searchElementForProperty(std::optional<std::string_view> property,
        std::optional<std::string_view> label, std::optional<std::string_view> key,
        const platform::Value& value, ZRSearchComparison comparison);

    bool isPublishable() const override { return false; }

protected:
    ZRSubscribedGroup() = default;

private:
    friend struct ZRRecordClasses;
};

/// Puts into `result` the e-mail address by which each member is to be reached, of the group and of all
/// groups in it. Me and members without an address are left out.
ZR_EXPORT void ZRRecursivelyBuildPeopleList(
    const ZRGroup& group, std::unordered_map<platform::Ref<ZRPerson>, platform::Value>& result);

/// For the source list: local before subscribed, ordinary before smart, then by name.
ZR_EXPORT int ZRCompareGroupName(const ZRGroup& a, const ZRGroup& b);
