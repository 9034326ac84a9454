// A card: what a person adds to a record, above all the names.
#pragma once

#include "core/ZRRecord.h"

#include <cstdint>
#include <map>

/// What a vCard holds besides what every vCard does.
using ZRVCardOptions = std::uint32_t;
inline constexpr ZRVCardOptions kZRVCardWithNote = 0x1;
inline constexpr ZRVCardOptions kZRVCardWithPhoto = 0x2;

/// A card.
///
/// Ownership, Threads, Errors: as ZRRecord.
class ZR_EXPORT ZRPerson : public ZRRecord {
public:
    static const ZRRecordClass recordClassDescription;
    const ZRRecordClass& recordClass() const override { return recordClassDescription; }

    /// A new card in the shared roster, or in the one given; absent when there is none.
    static platform::Ref<ZRPerson> init();
    static platform::Ref<ZRPerson> initWithRoster(platform::Ref<ZRRoster> roster);
    static platform::Ref<ZRPerson> initWithUniqueId(
        std::string_view uniqueId, platform::Ref<ZRRoster> roster);
    /// The first card of vCard data (RFC 2426, vCard 2.1), read raw; absent when it cannot be read or no
    /// shared roster exists.
    static platform::Ref<ZRPerson> initWithVCardRepresentation(std::string_view data);
    static platform::Ref<ZRPerson> initWithVCardRepresentation(
        std::string_view data, platform::Ref<ZRRoster> roster);

    // ---- names

    std::string _fullName() const;
    std::string nts__fullName() const ZR_NTS;
    std::string _fullNameIncludingAuxiliaryElements(bool auxiliary) const;
    std::string nts__fullNameIncludingAuxiliaryElements(bool auxiliary) const ZR_NTS;
    /// What a list shows for this card; never empty ("No Name" in the user's language).
    std::string compositeName() const;
    std::string _compositeNameIncludingAuxiliaryElements(bool auxiliary) const;
    std::string _realCompositeName() const;
    std::string _realCompositeNameIncludingAuxiliaryElements(bool auxiliary) const;
    std::string nts_realCompositeNameIncludingAuxiliaryElements(bool auxiliary) const ZR_NTS;
    std::string nts__RealCompositeName() const ZR_NTS;
    std::string alternateName() const;
    std::string nts_AlternateName() const ZR_NTS;
    std::string createAlternateName() const;
    std::string _fullPhoneticName() const;
    std::string nts__fullPhoneticName() const ZR_NTS;
    std::string createFirstLastSorting(bool a, bool part1) const;
    void createFirstLastSortingNamePart1(std::string& part1, std::string& part2) const;
    void createLastFirstSortingNamePart1(std::string& part1, std::string& part2) const;
    void lastFirstSortingNamePart1(std::string& part1, std::string& part2) const;
    void firstLastSortingNamePart1(std::string& part1, std::string& part2) const;
    std::string similarNameForHashing() const;
    platform::Value stringForIndexing() const;
    platform::Value nts_StringForIndexing() const ZR_NTS;

    // ---- flags

    bool _isCompany() const;
    bool nts__isCompany() const ZR_NTS;
    bool _isLastNameFirst() const;
    bool nts__isLastNameFirst() const ZR_NTS;

    // ---- the card as a whole

    bool isReadOnly() const override;
    bool isEmptyPerson() const;
    /// The multi-value properties that have at least one entry.
    std::vector<std::string> zrUsedProperties() const;
    void nts_CascadeRemove() override ZR_NTS;
    static platform::Ref<ZRPerson> personFromDictionary(const platform::Value& dictionary);
    static platform::Ref<ZRPerson> personFromDictionary(const platform::Value& dictionary,
        platform::Ref<ZRRoster> roster, bool skipUnknownProperties, bool generateMultiValueIDs);
    void populateWithDictionary(const platform::Value& dictionary, bool skipUnknownProperties,
        bool generateMultiValueIDs, bool recordIsNew);
    void resetWithDictionary(
        const platform::Value& dictionary, bool skipUnknownProperties, bool generateMultiValueIDs);

    // ---- as a vCard                                       (interchange/vcard/ZRPerson+VCardWriting.cpp)
    // Where no options are given, the preferences below rule. An image cache changes nothing: it is taken for
    // callers that pass one along. A card that fails half-way is logged and ends there.

    /// vCard 3.0 (RFC 2426) in UTF-8; absent when there is no shared roster, or when a text is no Unicode.
    std::optional<std::string> vCardRepresentation() const;
    std::string _vCardRepresentationAsString() const;
    std::string _vCardRepresentationAsStringUsingImageCache(const platform::Value& imageCache) const;
    std::string _vCardRepresentationAsStringUsingImageCache(
        const platform::Value& imageCache, ZRVCardOptions options) const;
    /// The same behind what `cards` holds, for many cards in a row.
    void _appendVCardRepresentation(std::string& cards, ZRVCardOptions options) const;
    /// vCard 2.1, each value in the first character set that can hold it. It never has a photo.
    std::string _21vCardRepresentationAsData() const;
    std::string _21vCardRepresentationAsData(ZRVCardOptions options) const;
    void _append21vCardRepresentation(std::string& cards, ZRVCardOptions options) const;
    /// False for what Me keeps private; other cards show everything.
    bool _showField(std::string_view property) const;
    /// The same of one entry of a multi-value.
    bool _showField(std::string_view property, std::string_view identifier) const;

    /// Whether vCards hold notes and photos; false until somebody sets it.
    static bool includeNotesInVCards();
    static bool includePhotosInVCards();
    static void setIncludeNotesInVCards(bool include);
    static void setIncludePhotosInVCards(bool include);
    /// Whether the vCard of Me leaves out the fields that are marked as private. A field is a property, or
    /// "PROPERTY.IDENTIFIER" for one entry of it.
    static bool privateVCardEnabled();
    static void setPrivateVCardEnabled(bool enabled);
    static bool vcardFieldisPrivate(std::string_view field);
    static void setVCardField(std::string_view field, bool isPrivate);
    /// Forgets which fields of Me vCards leave out.
    static void clearPrivateFields();

    // ---- class-level

    static ZRPropertyTypes builtInProperties();
    static std::vector<std::string> builtInLabelsForProperty(std::string_view property);
    static std::vector<std::string> initialFieldsForProperty(std::string_view property);
    /// Declares custom properties of people; answers how many were added.
    static std::int64_t addPropertiesAndTypes(const platform::Value& typesByName);
    static std::int64_t addPropertiesAndTypes(const platform::Value& typesByName, ZRRoster* roster);
    static std::int64_t addPropertiesAndTypes(
        const platform::Value& typesByName, ZRRoster* roster, bool acquireLock);
    static std::int64_t addPropertiesAndTypes(
        const platform::Value& typesByName, ZRRoster* roster, bool acquireLock, bool save);
    static std::int64_t removeProperties(const platform::Value& names);

    // ---- searching                                                     (search/ZRRecord+Search.cpp)

    /// A search for people by one property; absent texts are null. See ZRSearchElementMatch.
    static platform::Ref<ZRSearchElement> searchElementForProperty(std::optional<std::string_view> property,
        std::optional<std::string_view> label, std::optional<std::string_view> key,
        const platform::Value& value, ZRSearchComparison comparison);

    // ---- pictures, in the images directory beside the store

    platform::Value imageData() const;
    bool setImageData(const platform::Value& data);
    platform::Value imageDataOfKind(std::string_view kind) const;
    bool setImageData(const platform::Value& data, std::string_view kind);
    bool nts_SetImageData(const platform::Value& data, std::string_view kind) ZR_NTS;
    std::optional<std::string> pathForUIDTaggedImage() const;
    std::optional<std::string> nts_PathForUIDTaggedImage() const ZR_NTS;
    std::optional<std::string> nts_PathForUIDTaggedImageOfKind(std::string_view kind) const ZR_NTS;
    std::string nts_imageNameForPerson() const ZR_NTS;
    std::string _imageNameForPerson() const;
    platform::Value _customImageData() const;
    platform::Value nts_CustomImageData() const ZR_NTS;
    std::optional<std::string> largeImagePath() const;
    platform::Value largeImageData() const;
    bool setLargeImageData(const platform::Value& data);

protected:
    ZRPerson() = default;

private:
    friend struct ZRRecordClasses;
};

/// A card that came with a subscription.
class ZR_EXPORT ZRSubscribedPerson : public ZRPerson {
public:
    static const ZRRecordClass recordClassDescription;
    const ZRRecordClass& recordClass() const override { return recordClassDescription; }

    static platform::Ref<ZRSearchElement> searchElementForProperty(std::optional<std::string_view> property,
        std::optional<std::string_view> label, std::optional<std::string_view> key,
        const platform::Value& value, ZRSearchComparison comparison);
    /// True when a group that it came with is read-only, or nobody may write to the subscription.
    bool isReadOnly() const override;

protected:
    ZRSubscribedPerson() = default;

private:
    friend struct ZRRecordClasses;
};

/// Longest first: 1 when `a` is shorter, -1 when it is longer, 0 at equal length (UTF-16 units).
ZR_EXPORT int ZRCompareStringLength(std::string_view a, std::string_view b);
