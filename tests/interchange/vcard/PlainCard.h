// A person as plain texts: what tests of round trips compare.
#pragma once

#include "core/ZRConstants.h"
#include "core/ZRPerson.h"
#include "store/ZRRoster.h"

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace test {

using Texts = std::map<std::string, std::string>;

/// The texts that a vCard has lines for; a birthday is a day.
inline const std::array kTextsOfCards = {kZRLastNameProperty, kZRFirstNameProperty, kZRMiddleNameProperty,
    kZRTitleProperty, kZRSuffixProperty, kZRNicknameProperty, kZRMaidenNameProperty,
    kZRFirstNamePhoneticProperty, kZRMiddleNamePhoneticProperty, kZRLastNamePhoneticProperty,
    kZROrganizationProperty, kZRDepartmentProperty, kZRJobTitleProperty, kZRNoteProperty};

/// One entry of a multi-value: a single value stands under "", the parts of an address under their keys.
struct PlainEntry {
    std::string label;
    Texts value;
    bool isPrimary = false;

    friend bool operator==(const PlainEntry&, const PlainEntry&) = default;
};

/// Everything of a person but its id and the dates of its record. Days are ISO 8601.
struct PlainCard {
    Texts texts;
    std::map<std::string, std::vector<PlainEntry>> entries;
    std::int64_t flags = 0;
    std::string photo;
    std::vector<std::string> groups;

    static PlainCard of(const ZRPerson& person);
    /// What `text` prints, in files of cases.
    static PlainCard read(const std::string& text);
    /// A new person of that roster with all that is here but the groups.
    platform::Ref<ZRPerson> addTo(const platform::Ref<ZRRoster>& roster) const;
    /// A line each, but for what is not there; all but the bytes of the picture.
    std::string text() const;
    friend bool operator==(const PlainCard&, const PlainCard&) = default;
};

} // namespace test
