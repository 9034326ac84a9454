// How a card takes in a value of another card: the rules of an update, and those of a merge.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRPerson.h"
#include "core/ZRPropertyType.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>

class ZRMultiValue;

/// How a preview marks what an update did.
enum ZRPropertyColor { ZRPropertyAddedColor, ZRPropertyChangedColor };

/// What an update did: a property, or "PROPERTY.IDENTIFIER" of one of its entries, to what was done to it.
using ZRPropertyChanges = std::map<std::string, ZRPropertyColor, std::less<>>;

/// The operations on a person with which cards are brought together, value by value.
///
/// In an *update* the newcomer wins: its values replace those of the card, an entry replaces the one entry of
/// its label, notes are appended. In a *merge* the card wins: what does not fit beside its own value goes
/// into its note. What the newcomer does not have changes nothing in either.
///
/// Ownership: borrows the person.
/// Threads:   as ZRPerson; each operation is one hold of the lock.
/// Errors:    as ZRPerson.
class ZR_EXPORT ZRPersonAdditions {
public:
    using Value = platform::Value;
    explicit ZRPersonAdditions(ZRPerson& person) : _person(person) { }

    // ---- update: `changes` grows by what was done

    /// Appends the note behind a CR, unless it is the one that is there.
    void updateNote(const Value& note, ZRPropertyChanges& changes);
    void updateSingleValue(const Value& value, std::string_view property, ZRPropertyChanges& changes);
    /// Takes in each entry whose value is not here, in whatever case. It replaces the value of the one entry
    /// with its label, which keeps its identifier; where no entry has the label, or several do, it joins
    /// them. Entries that came in just before count: of two with a label that one entry had, the last stays.
    void updateMultiValue(const Value& value, std::string_view property, ZRPropertyChanges& changes);
    /// The one of the three that is for this property, under the lock that the caller holds.
    void nts_updateValue(const Value& value, std::string_view property, ZRPropertyType type,
        ZRPropertyChanges& changes) ZR_NTS;

    // ---- merge

    void mergeNote(const Value& note);
    /// Sets what is missing. A value other than the card's goes into the note, a date as its day. Not so
    /// arrays, dictionaries and data, which no note could hold.
    void mergeSingleValue(const Value& value, std::string_view property);
    /// Adds each entry that is not here with its label, telephone numbers in the user's format.
    void mergeMultiValue(const Value& value, std::string_view property);
    /// The one of the three that is for this property, under the lock that the caller holds.
    void nts_mergeValue(const Value& value, std::string_view property, ZRPropertyType type) ZR_NTS;

private:
    void nts_updateNote(const Value& note, ZRPropertyChanges& changes) ZR_NTS;
    void nts_updateSingleValue(
        const Value& value, std::string_view property, ZRPropertyChanges& changes) ZR_NTS;
    void nts_updateMultiValue(
        const Value& value, std::string_view property, ZRPropertyChanges& changes) ZR_NTS;
    void nts_mergeSingleValue(const Value& value, std::string_view property, ZRPropertyType type) ZR_NTS;
    void nts_mergeMultiValue(const Value& value, std::string_view property) ZR_NTS;

    ZRPerson& _person;
};
