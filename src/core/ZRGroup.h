// Groups, as far as a record needs them: their name and who is in them.
#pragma once

#include "core/ZRRecord.h"

#include <unordered_map>

class ZRPerson;

/// A stored group of people and of other groups. Members and subgroups are sets: their order means nothing.
///
/// Ownership, Threads, Errors: as ZRRecord.
class ZR_EXPORT ZRGroup : public ZRRecord {
public:
    static const ZRRecordClass recordClassDescription;
    const ZRRecordClass& recordClass() const override { return recordClassDescription; }

    /// A new group in the shared roster, or in the one given; absent when there is none.
    static platform::Ref<ZRGroup> init();
    static platform::Ref<ZRGroup> initWithRoster(platform::Ref<ZRRoster> roster);

    std::string name() const;
    ZRRecordList members() const;
    ZRRecordList nts_Members() const ZR_NTS;
    bool addMember(ZRPerson& person);
    bool nts_AddMember(ZRPerson& person) ZR_NTS;
    bool removeMember(ZRPerson& person);
    bool nts_RemoveMember(ZRPerson& person) ZR_NTS;

    /// Subgroups, one level deep.
    ZRRecordList subgroups() const;
    ZRRecordList nts_Subgroups() const ZR_NTS;
    /// Which of the person's entries is used to reach it as a member: the chosen one, else the primary one;
    /// absent when it has none. Raises for a property that is no multi-value.
    std::optional<std::string> distributionIdentifierForProperty(
        std::string_view property, const ZRPerson& person) const;

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
