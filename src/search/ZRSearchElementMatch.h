// One comparison of one property with a value.
#pragma once

#include "core/ZRPropertyType.h"
#include "search/ZRSearchElement.h"

struct ZRPropertyPlace;

namespace objectstore {
class StoreObject;
} // namespace objectstore

/// `property comparison value`, of the entries of a label where one is given. Without a property it looks
/// through the whole card.
///
/// The value is a text, a number, a date, a record; for the comparisons with today an interval in seconds;
/// for membership a group, or the text kZRSmartGroupAnyGroupMembershipProperty for "in any group".
///
/// Ownership, Threads, Errors: as ZRSearchElement.
class ZR_EXPORT ZRSearchElementMatch final : public ZRSearchElement {
public:
    using Text = std::optional<std::string>;
    using TextView = std::optional<std::string_view>;

    static platform::Ref<ZRSearchElementMatch> initWithProperty(TextView property, TextView label,
        TextView key, const platform::Value& value, bool searchPeople, ZRSearchComparison comparison);
    static platform::Ref<ZRSearchElementMatch> initWithProperty(TextView property, TextView label,
        TextView key, const platform::Value& value, bool searchPeople, bool searchSubscribed,
        ZRSearchComparison comparison);

    /// Absent or empty: the whole card.
    const Text& _searchProperty() const { return _definition.property; }
    const platform::Value& _value() const { return _definition.value; }
    /// The entries of a multi-value that count: those of this label.
    const Text& _label() const { return _definition.label; }
    /// The entry of a dictionary that counts, such as the city of an address.
    const Text& _key() const { return _definition.key; }
    ZRSearchComparison _comparison() const { return _definition.comparison; }

    /// For a birthday or another day the value becomes noon of its day in the local zone, as such days are
    /// read.
    void setSearchValue(const platform::Value& value) override;
    void setDiacriticInsensitiveOption(bool insensitive) override
    {
        _definition.diacriticInsensitive = insensitive;
    }
    bool diacriticInsensitiveOption() const override { return _definition.diacriticInsensitive; }

    bool searchPeople() const override { return _definition.searchPeople; }
    bool searchGroups() const override { return !_definition.searchPeople; }
    bool searchSubscribed() const override { return _definition.searchSubscribed; }
    bool isSimpleSearch() const override;
    /// Not equal, or not containing, in the whole or in case only.
    bool _isNegation() const override;
    std::vector<const ZRRecordClass*> searchRecordClasses() const override;
    platform::Value _withinDate() const override;
    std::vector<platform::Ref<ZRGroup>> groupsUsedInDefinition() const override;
    bool usesGroupInDefinition(const ZRGroup& group) const override;
    bool isReferencingGroup(const ZRGroup& group) const override;
    bool isEqual(const platform::Object& other) const override;
    std::size_t hash() const override;
    std::string description() const override;

    // ---- asked of the store                             (ZRSearchElementMatch+Predicate.cpp and its kin)

    using ZRSearchElement::_predicateForImplClass;
    Predicate _predicateForImplClass(
        const objectstore::Entity& implClass, ZRManagedObjectContext& context) const override ZR_NTS;
    std::vector<std::string> prefetchingRelationshipKeyPathsForImplClass(
        const objectstore::Entity& implClass, ZRRoster& roster) const override ZR_NTS;

    // ---- asked of one record                            (ZRSearchElementMatch+Memory.cpp)

    bool nts_MatchesRecord(const ZRRecord& record) const override ZR_NTS;
    /// The comparison itself, of one value: texts with texts, numbers with numbers, dates with dates or
    /// intervals, records with records; anything else answers false.
    bool compareWithRecordValue(const platform::Value& recordValue) const;

    // ---- archives                                       (SearchElementArchive.cpp)

    /// 105 for membership, which older versions do not know.
    std::int64_t encodingVersion() const override;
    /// The version of all other elements that are archived from now on.
    static void setEncodingVersion(std::int64_t version);
    std::string archiveClassName() const override { return "ZRSearchElementMatch"; }
    void encodeWithCoder(platform::KeyedArchiver& coder) const override;
    static platform::Ref<ZRSearchElementMatch> initWithCoder(platform::KeyedUnarchiver& coder);

private:
    template <class T, class... Arguments>
    friend platform::Ref<T> platform::makeRef(Arguments&&... arguments);

    /// What the caller said.
    struct Definition {
        Text property;
        Text label;
        Text key;
        platform::Value value = {};
        bool searchPeople = true;
        bool searchSubscribed = false;
        bool diacriticInsensitive = false;
        ZRSearchComparison comparison = kZREqual;
    };

    explicit ZRSearchElementMatch(Definition definition) : _definition(std::move(definition)) { }
    ~ZRSearchElementMatch() override = default;

    /// By what the property holds, and what of it was given: which form compares it.
    enum class TestCase : std::int8_t {
        unknown = -1,
        singleScalar,
        singleArray,
        singleDictionaryKey,
        singleDictionaryNoKey,
        multiLabelScalar,
        multiLabelArray,
        multiLabelDictionaryKey,
        multiLabelDictionaryNoKey,
        multiNoLabelScalar,
        multiNoLabelArray,
        multiNoLabelDictionaryKey,
        multiNoLabelDictionaryNoKey
    };
    /// Found out at the first record, under the global lock.
    struct Cache {
        ZRPropertyType propertyType = kZRPropertyTypeUnknown;
        TestCase testCase = TestCase::unknown;
    };
    using SingleForm = bool (ZRSearchElementMatch::*)(const platform::Value&) const;

    /// A comparison as the store is asked it, once its special values are settled.
    struct Question;

    static std::int64_t baseVersion();
    bool isWholeCard() const;
    std::string _propertyOrEmpty() const { return _definition.property.value_or(""); }

    Predicate converted(const objectstore::Entity& implClass, ZRManagedObjectContext& context) const ZR_NTS;
    Predicate ofKnownKey(const ZRPropertyPlace& place, Question question) const;
    Predicate ofAddresses(const ZRPropertyPlace& place, const Question& question) const;
    Predicate _predicateForKeyPath(const std::string& keyPath, const Question& question) const;
    Predicate _predicateForToManyRelationshipName(
        const std::string& relationship, const std::string& relativeKeyPath, const Question& question) const;
    Predicate _predicateForMessagingAddressService(std::string_view service, const Question& question) const;
    Predicate _predicateForCustomProperty(
        objectstore::StoreObject& definition, const Question& question) const;
    Predicate nts_predicateForMembership(
        const objectstore::Entity& implClass, ZRManagedObjectContext& context) const ZR_NTS;

    bool nts_wholeCardMatches(const ZRRecord& record) const ZR_NTS;
    bool nts_membershipMatches(const ZRRecord& record) const ZR_NTS;
    void _nts_CalculatePropertyTypeForRecord(const ZRRecord& record) const ZR_NTS;
    bool passesTest(const platform::Value& value) const;
    bool _compareSingleScalarWithRecordValue(const platform::Value& value) const;
    bool _compareSingleArrayWithRecordValue(const platform::Value& value) const;
    bool _compareSingleDictionaryKeyWithRecordValue(const platform::Value& value) const;
    bool _compareSingleDictionaryNoKeyWithRecordValue(const platform::Value& value) const;
    bool _compareMultiLabelScalarWithRecordValue(const platform::Value& value) const;
    bool _compareMultiLabelArrayWithRecordValue(const platform::Value& value) const;
    bool _compareMultiLabelDictionaryKeyWithRecordValue(const platform::Value& value) const;
    bool _compareMultiLabelDictionaryNoKeyWithRecordValue(const platform::Value& value) const;
    bool _compareMultiNoLabelScalarWithRecordValue(const platform::Value& value) const;
    bool _compareMultiNoLabelArrayWithRecordValue(const platform::Value& value) const;
    bool _compareMultiNoLabelDictionaryKeyWithRecordValue(const platform::Value& value) const;
    bool _compareMultiNoLabelDictionaryNoKeyWithRecordValue(const platform::Value& value) const;
    bool compareEntries(const platform::Value& value, SingleForm form) const;
    std::uint32_t textOptions() const;
    bool bitsMatch(const platform::Value& value) const;
    bool textMatches(const platform::Value& value) const;

    Definition _definition;
    mutable Cache _cache;
};
