// How a person is written as a vCard 4.0.
#pragma once

#include "interchange/vcard/Line40.h"
#include "interchange/vcard/Names40.h"
#include "interchange/vcard/StoredCard.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vcard {

/// Writes one card behind the end of a text, in an order of its own.
///
/// An entry whose label has no type stands in an item group with its label, as in version 3.0.
///
/// Ownership: borrows person and text.
/// Threads:   lives under one hold of the global lock.
/// Errors:    what the store raises passes through; the text then ends where that happened.
class Card40 {
public:
    Card40(const ZRPerson& person, std::string& to) ZR_NTS;

    void write(ZRVCardOptions options, const platform::Value& photo) ZR_NTS;

private:
    Line40 line(std::string_view name) const { return Line40(_to, name); }
    /// A line of one text, unless that is empty.
    void text(std::string_view name, std::string_view value);
    void text(std::string_view name, const objectstore::Slot& slot) { text(name, _card.text(slot)); }

    void writeNames() ZR_NTS;
    void writeOrganization();
    void writeAddresses();
    void writeCountry(const Entry& entry, std::int64_t group);
    void writeTexts();
    void writeURIs();
    void writeMessaging();
    void writeDays();
    void writeRelated();
    void writeFlags();
    void writeCategories();
    void writeBooks() ZR_NTS;

    std::string_view value(const Entry& entry) { return entry.value(_scratch); }
    Line40 begin(std::string_view name, std::string_view types, const Entry& entry, std::int64_t group);
    void label(const Entry& entry, std::int64_t group);
    /// The line of one entry, and its label where the type does not say all; `end` is given the line for its
    /// value.
    template <class End>
    void entry(std::string_view name, Type40 type, const Entry& entry, End&& end);

    const ZRPerson& _person;
    StoredCard _card;
    std::string& _to;
    /// The number of the next item group.
    std::int64_t _group = 1;
    /// Where the values of one line are put together.
    std::string _scratch;
};

} // namespace vcard
