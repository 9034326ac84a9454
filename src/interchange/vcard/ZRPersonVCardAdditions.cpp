// What both versions of a vCard have in common, and the types that stand for labels.
#include "interchange/vcard/ZRPersonVCardAdditions.h"

#include "core/ZRConstants.h"
#include "interchange/vcard/VCardText.h"
#include "store/ZRModelSlots.h"

#include <array>

namespace {

/// What an entry with a label is written as; empty where no type stands for the label.
struct LabelKeys {
    std::string_view label, email, generic, address3, address21;
    std::array<std::string_view, 2> phone;
};

constexpr LabelKeys kLabelKeys[] = {
    {zr::kZRWorkLabel, "WORK", "WORK", ";type=WORK", "WORK", {"WORK"}},
    {zr::kZRHomeLabel, "HOME", "HOME", ";type=HOME", "HOME", {"HOME"}},
    {zr::kZRPhoneMobileLabel, {}, {}, {}, {}, {"CELL"}},
    {zr::kZRPhoneMainLabel, {}, {}, {}, {}, {"MAIN"}},
    {zr::kZRPhoneWorkFAXLabel, {}, {}, {}, {}, {"WORK", "FAX"}},
    {zr::kZRPhoneHomeFAXLabel, {}, {}, {}, {}, {"HOME", "FAX"}},
    {zr::kZRPhonePagerLabel, {}, {}, {}, {}, {"PAGER"}},
};

static_assert(zr::kZREmailWorkLabel == zr::kZRWorkLabel && zr::kZREmailHomeLabel == zr::kZRHomeLabel
        && zr::kZRPhoneWorkLabel == zr::kZRWorkLabel && zr::kZRPhoneHomeLabel == zr::kZRHomeLabel
        && zr::kZRAddressWorkLabel == zr::kZRWorkLabel && zr::kZRAddressHomeLabel == zr::kZRHomeLabel,
    "one row of the table stands for home, and one for work");

const LabelKeys& keysOf(std::string_view label)
{
    static constexpr LabelKeys none{};
    for (const LabelKeys& keys : kLabelKeys)
        if (keys.label == label)
            return keys;
    return none;
}

} // namespace

using Writer = ZRPersonVCardAdditions;

std::string_view Writer::_vCardKeyForEmailLabel(std::string_view label) { return keysOf(label).email; }
std::string_view Writer::_vCardKeyForGenericLabel(std::string_view label) { return keysOf(label).generic; }

std::string_view Writer::_vCardKeyForAddressLabel(std::string_view label, bool vCard3)
{
    const LabelKeys& keys = keysOf(label);
    return vCard3 ? keys.address3 : keys.address21;
}

Writer::Keys Writer::_vCardKeysForPhoneLabel(std::string_view label)
{
    const auto& keys = keysOf(label).phone;
    return {keys.data(), static_cast<std::size_t>(!keys[0].empty()) + !keys[1].empty()};
}

Writer::ZRPersonVCardAdditions(const ZRPerson& person, std::string& to)
    : _person(person), _card(person), _to(to)
{
}

void Writer::appendName(std::string& to) const
{
    const auto& slots = contactSlots();
    zrAppendKoshified(to, _card.text(slots.lastName));
    for (const Slot* slot : {&slots.firstName, &slots.middleName, &slots.title, &slots.suffix}) {
        to += ';';
        zrAppendKoshified(to, _card.text(*slot));
    }
}

bool Writer::hasOrganization() const
{
    const auto& slots = contactSlots();
    const bool noName = _card.isAbsent(slots.organization), noDepartment = _card.isAbsent(slots.department);
    if (noName || noDepartment)
        return !noName || !noDepartment;
    return !_card.text(slots.organization).empty() || !_card.text(slots.department).empty();
}

void Writer::appendOrganization(std::string& to) const
{
    zrAppendKoshified(to, _card.text(contactSlots().organization));
    to += ';';
    zrAppendKoshified(to, _card.text(contactSlots().department));
}

/// A post office box that is never filled; a street of two lines, of which one without a CR is the second;
/// city, state, postal code, country.
void Writer::appendAddress(std::string& to, objectstore::StoreObject& address) const
{
    const auto& slots = addressSlots();
    const std::string_view street = address.text(slots.street);
    const std::size_t end = street.find('\r');
    to += ';';
    zrAppendKoshified(to, end == street.npos ? std::string_view() : street.substr(0, end));
    to += ';';
    zrAppendKoshified(to, end == street.npos ? street : street.substr(end + 1));
    for (const Slot* slot : {&slots.city, &slots.state, &slots.zipCode, &slots.countryName}) {
        to += ';';
        zrAppendKoshified(to, address.text(*slot));
    }
}

std::span<const Writer::TextLine> Writer::otherNames()
{
    static const auto& slots = contactSlots();
    static const std::array lines = {
        TextLine{"NICKNAME", &slots.nickname},
        TextLine{"X-MAIDENNAME", &slots.maidenName},
        TextLine{"X-PHONETIC-FIRST-NAME", &slots.phoneticFirstName},
        TextLine{"X-PHONETIC-MIDDLE-NAME", &slots.phoneticMiddleName},
        TextLine{"X-PHONETIC-LAST-NAME", &slots.phoneticLastName},
    };
    return lines;
}

void Writer::writeBirthday()
{
    if (const auto birthday = _card.birthday())
        _to.append("BDAY;value=date:").append(zrISO8061StringFromStoredDay(*birthday)).append("\r\n");
}

/// The names of groups have nothing escaped.
void Writer::writeCategories(std::string& to) const
{
    const auto names = _card.groupNames();
    std::string joined;
    for (const auto& name : names)
        joined.append(&name == &names.front() ? "" : ",").append(name);
    if (!joined.empty())
        to.append("CATEGORIES:").append(joined).append("\r\n");
}
