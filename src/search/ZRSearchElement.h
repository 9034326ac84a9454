// Which records are wanted: the base of the tree that says so.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRGlobalLock.h"
#include "core/ZRTypes.h"
#include "platform/value/Error.h"
#include "platform/value/KeyedArchive.h"
#include "platform/value/Object.h"
#include "platform/value/Value.h"

#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class ZRGroup;
class ZRManagedObjectContext;
class ZRRecord;
class ZRRoster;
struct ZRRecordClass;

namespace objectstore {
class Entity;
class StorePredicate;
} // namespace objectstore

/// Raised when an archived search element was written by a version that knows more than this one.
///
/// Ownership: owns its text.
/// Threads:   like any plain value.
/// Errors:    none.
class ZR_EXPORT ZRIncompatibleSearchElementVersionException : public std::exception {
public:
    explicit ZRIncompatibleSearchElementVersionException(std::int64_t version);
    ~ZRIncompatibleSearchElementVersionException() override;

    static constexpr std::string_view name = "ZRIncompatibleSearchElementVersionException";
    const char* what() const noexcept override { return _text.c_str(); }

private:
    std::string _text;
};

/// A condition on records: a comparison of one property (ZRSearchElementMatch), or an AND or OR of others
/// (ZRSearchElementConjunction). It can be asked of the store (`_predicateForImplClass`, fast) and of one
/// live record (`matchesRecord`, always possible).
///
/// It is no query: it has no order and no limit, and it is bound to no roster; see
/// `ZRRoster::recordsMatchingSearchElement`.
///
/// Ownership: shared by reference; shares ownership of its children and its value.
/// Threads:   the setters are for whoever made it, before others see it; after that any thread may ask. The
///            `nts_` forms, and what makes predicates, expect the global lock.
/// Errors:    a caller's mistake raises ZRInvalidArgument. What cannot be asked of the store has no
///            predicate.
class ZR_EXPORT ZRSearchElement : public platform::Object, public platform::Archivable {
public:
    using Predicate = platform::Ref<const objectstore::StorePredicate>;

    /// All of `children`, or any of them for kZRConjunctionOr. A single child is answered itself, whatever
    /// the conjunction; none raises.
    static platform::Ref<ZRSearchElement> searchElementForConjunction(
        ZRSearchConjunction conjunction, const std::vector<platform::Ref<ZRSearchElement>>& children);

    // ---- asked of one record

    /// Evaluated on the live record, in memory.
    bool matchesRecord(const ZRRecord& record) const;
    virtual bool nts_MatchesRecord(const ZRRecord& record) const ZR_NTS;
    /// Evaluated as the store would; where there is no predicate, as `matchesRecord`. Where both routes can
    /// answer, they agree but for what docs/search.md lists.
    bool predicateMatchesRecord(const ZRRecord& record) const;
    virtual bool nts_PredicateMatchesRecord(const ZRRecord& record) const ZR_NTS;
    /// For tests: `predicateMatchesRecord` runs a real fetch in a context of its own. Such a fetch sees what
    /// was saved only.
    static void _setTestPredicatesMatchRecordInStore(bool inStore);

    // ---- asked of the store

    /// The condition on stored objects of that entity; absent when the store cannot be asked. A class of
    /// records that the element does not look for gives the predicate that is never true.
    virtual Predicate _predicateForImplClass(
        const objectstore::Entity& implClass, ZRManagedObjectContext& context) const ZR_NTS;
    /// In the context that the roster keeps the entity in.
    Predicate _predicateForImplClass(const objectstore::Entity& implClass, ZRRoster& roster) const ZR_NTS;
    /// The relationships that evaluating the element reads.
    virtual std::vector<std::string> prefetchingRelationshipKeyPathsForImplClass(
        const objectstore::Entity& implClass, ZRRoster& roster) const ZR_NTS;

    // ---- what it looks for

    /// The public classes of the records that it can match, in the order to search them.
    virtual std::vector<const ZRRecordClass*> searchRecordClasses() const { return {}; }
    virtual bool searchPeople() const { return false; }
    virtual bool searchGroups() const { return false; }
    virtual bool searchSubscribed() const { return false; }
    /// Whether it looks through the whole card, whatever the property.
    virtual bool isSimpleSearch() const { return false; }
    virtual bool _isNegation() const { return false; }
    /// Since when something that matches today may not have matched: now minus the interval of a comparison
    /// with today. Absent without one.
    virtual platform::Value _withinDate() const { return {}; }

    // ---- the groups that it names

    /// The groups whose members it looks for, one level deep.
    virtual std::vector<platform::Ref<ZRGroup>> groupsUsedInDefinition() const;
    virtual bool usesGroupInDefinition(const ZRGroup& group) const;
    /// Whether the group is named by the element, or by the smart groups that it names.
    virtual bool isReferencingGroup(const ZRGroup& group) const;

    // ---- what can be set

    /// Gives every comparison in it that value.
    virtual void setSearchValue(const platform::Value& value);
    /// Whether texts are also compared without their diacritics. Only a comparison has this option; setting
    /// it elsewhere raises ZRUnimplementedOperation.
    virtual void setDiacriticInsensitiveOption(bool insensitive);
    virtual bool diacriticInsensitiveOption() const { return false; }

    // ---- archives                                                      (SearchElementArchive.cpp)

    /// What a reader must know to understand it.
    virtual std::int64_t encodingVersion() const { return 1; }
    /// Raises ZRIncompatibleSearchElementVersionException for a version of 10501 or more.
    static void checkCurrentVersionCompatibleWithCoder(platform::KeyedUnarchiver& coder);
    /// The element as bytes, and back. Bytes that are no archive of an element are answered with an error; a
    /// newer version raises. Reading needs the lock, since an element may name a group.
    platform::Result<std::string> archivedData() const;
    /// Groups are those of `owner`, the roster that keeps the archive, where the archive names its directory
    /// or one that is not there any more; absent, the shared roster.
    static platform::Result<platform::Ref<ZRSearchElement>> nts_unarchivedElement(
        std::string_view data, ZRRoster* owner = nullptr) ZR_NTS;

    /// Same class, and asking for the same but for the value, which takes no part.
    bool isEqual(const platform::Object& other) const override;
    std::size_t hash() const override;

protected:
    ZRSearchElement() = default;
    ~ZRSearchElement() override = default;
};
