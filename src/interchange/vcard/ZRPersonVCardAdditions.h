// How a person is written as a vCard.
#pragma once

#include "interchange/vcard/StoredCard.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

/// Writes one card behind the end of a text: version 3.0, or 2.1.
///
/// It is no general writer of vCards: it knows the lines of a person, and their order. No line is folded;
/// only Base64 is broken into lines.
///
/// Ownership: borrows person and text.
/// Threads:   lives under one hold of the global lock.
/// Errors:    what the store raises passes through; the text then ends where that happened.
class ZRPersonVCardAdditions {
public:
    using Keys = std::span<const std::string_view>;

    ZRPersonVCardAdditions(const ZRPerson& person, std::string& to) ZR_NTS;

    void writeVersion30(ZRVCardOptions options, const platform::Value& photo) ZR_NTS;
    /// `charset` is the preferred character set, or empty.
    void writeVersion21(ZRVCardOptions options, std::string_view charset) ZR_NTS;

    // ---- lines

    /// A line for each entry of a property: "NAME;type=KEY;type=pref:value". An entry whose label has no key
    /// stands in an item group, unless `is21`, and takes a number of `groupCount`.
    void propertyLineForGenericABProperty(
        std::string_view property, std::string_view vCardProperty, bool is21, std::int64_t& groupCount);
    /// The same for version 2.1: no groups, and a character set for each value.
    void propertyLineForGenericABProperty21(
        std::string_view property, std::string_view vCardProperty, std::string_view charset);
    /// The line that gives the entry of an item group its label.
    static void appendLabel(std::string_view label, std::string& toVCardRep, std::int64_t inGroup);

    // ---- the types that stand for labels; none for a label of another kind

    static std::string_view _vCardKeyForEmailLabel(std::string_view label);
    static std::string_view _vCardKeyForGenericLabel(std::string_view label);
    /// With its ";type=" for version 3.0.
    static std::string_view _vCardKeyForAddressLabel(std::string_view label, bool vCard3);
    static Keys _vCardKeysForPhoneLabel(std::string_view label);

private:
    using Slot = objectstore::Slot;

    // ---- values of several fields

    void appendName(std::string& to) const;
    void appendOrganization(std::string& to) const;
    bool hasOrganization() const;
    void appendAddress(std::string& to, objectstore::StoreObject& address) const;

    // ---- lines of both versions

    struct TextLine {
        std::string_view name;
        const Slot* slot;
    };
    /// The names beside the full one, in the order of their lines.
    static std::span<const TextLine> otherNames();
    void writeBirthday();
    void writeCategories(std::string& to) const;

    // ---- version 3.0

    void line(std::string_view name, std::string_view value);
    void writeNames30() ZR_NTS;
    void writeEntry(std::string_view head, Keys keys, const vcard::Entry& entry, std::int64_t* group);
    void writeEmails30();
    void writePhones30();
    void writeAddresses30();
    void writeGeneric(std::span<const vcard::EntryLine> lines);
    void writeGeneric(std::string_view name, const vcard::EntryKeys& keys, std::int64_t* group);
    void writeFlags();

    // ---- version 2.1

    void line21(std::string_view name, std::string_view value);
    void encodedLine(std::string_view head, std::string_view escaped);
    void writeNames21() ZR_NTS;
    void writeEntries21();
    void writeAddresses21();
    void writeGeneric21(std::span<const vcard::EntryLine> lines);
    void writeGeneric21(std::string_view name, const vcard::EntryKeys& keys);

    const ZRPerson& _person;
    vcard::StoredCard _card;
    std::string& _to;
    /// The number of the next item group.
    std::int64_t _group = 1;
    std::string_view _charset;
    /// Where the values of one line are put together.
    std::string _scratch;
};
