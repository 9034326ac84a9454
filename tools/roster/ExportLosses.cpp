// How it is found out what an export leaves behind.
#include "ExportLosses.h"

#include "core/BuiltInProperties.h"
#include "core/ZRConstants.h"
#include "core/ZRMultiValue.h"
#include "core/ZRPerson.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <filesystem>

using platform::Value;

namespace {

/// What the roster keeps of its own: nobody misses it in a card.
constexpr std::array ownBooks = {zr::kZRUIDProperty, zr::kZRCreationDateProperty,
    zr::kZRModificationDateProperty, zr::kZRRemoteLocationProperty, zr::kZRHomePageProperty};

/// Version 2.1 has no line for these.
constexpr std::array without21 = {zr::kZRCalendarURIsProperty, zr::kZRPersonFlags};

/// Version 2.1 writes these labels as types of their line, and no others.
constexpr std::array phoneLabels21 = {zr::kZRPhoneWorkLabel, zr::kZRPhoneHomeLabel, zr::kZRPhoneMobileLabel,
    zr::kZRPhoneMainLabel, zr::kZRPhoneWorkFAXLabel, zr::kZRPhoneHomeFAXLabel, zr::kZRPhonePagerLabel};
constexpr std::array labels21 = {zr::kZRWorkLabel, zr::kZRHomeLabel};

constexpr std::array labelled = {zr::kZREmailProperty, zr::kZRPhoneProperty, zr::kZRAddressProperty,
    zr::kZRURLsProperty, zr::kZRAIMInstantProperty, zr::kZRJabberInstantProperty, zr::kZRMSNInstantProperty,
    zr::kZRYahooInstantProperty, zr::kZRICQInstantProperty, zr::kZROtherDatesProperty,
    zr::kZRRelatedNamesProperty};

template <class List>
bool contains(const List& list, std::string_view text)
{
    return std::ranges::find(list, text) != list.end();
}

bool carries(const std::string& format, const std::string& property, ZRPropertyType type)
{
    if (format == "json" || contains(ownBooks, property))
        return true;
    if (format == "csv")
        return hasColumns(property, type);
    const bool isCustom = builtInTypeOfProperty(zr::kZRPersonRecordType, property) == kZRPropertyTypeUnknown;
    return !isCustom && (format != "vcard21" || !contains(without21, property));
}

bool hasLabels21(std::string_view property, const ZRMultiValue& entries)
{
    return std::ranges::all_of(entries._allLabels(), [&](const std::string& label) {
        return property == zr::kZRPhoneProperty ? contains(phoneLabels21, label) : contains(labels21, label);
    });
}

/// The UUID in front of the table's name.
constexpr std::size_t kNameOfPicture = 36;

std::string cards(std::size_t count) { return fmt::format("{} {}", count, count == 1 ? "card" : "cards"); }

void append(std::string& list, const std::string& text) { list += (list.empty() ? "" : ", ") + text; }

} // namespace

ExportLosses::ExportLosses(const std::string& format, ExportScope scope, ZRRoster& roster)
    : _scope(scope), _isVCard(format.starts_with("vcard")), _is21(format == "vcard21")
{
    for (const auto& [property, type] :
        ZRRecord::propertyTypesWithRoster(ZRPerson::recordClassDescription, &roster))
        if (!carries(format, property, type))
            _uncarried.push_back(property);
    if (const auto me = roster.me(); me && ZRPerson::privateVCardEnabled())
        _me = me->uniqueId();
    std::error_code none;
    for (std::filesystem::directory_iterator at(roster.rosterImagesDirectory(), none), end;
         !none && at != end; at.increment(none))
        _pictures.insert(at->path().filename().string());
}

void ExportLosses::count(ZRPerson& person)
{
    if (!_scope.notes && !person.valueForProperty(zr::kZRNoteProperty).asText().empty())
        ++_notes;
    if (hasPicture(person)) {
        if (!_scope.pictures)
            ++_heldPictures;
        else if (!_isVCard || _is21)
            ++_notCarried["Picture"];
    }
    for (const auto& property : _uncarried) {
        const Value value = person.valueForProperty(property);
        if (!value.isNothing() && !(property == zr::kZRPersonFlags && value.asInteger() == 0))
            ++_notCarried[property];
    }
    if (_is21)
        countUnknownLabels(person);
    if (_isVCard && !_me.empty() && person.uniqueId() == _me)
        countPrivate(person);
}

void ExportLosses::countPrivate(const ZRPerson& me)
{
    if (!me.valueForProperty(zr::kZRBirthdayProperty).isNothing() && !me._showField(zr::kZRBirthdayProperty))
        ++_privateFields;
    for (const auto& property : me.zrUsedProperties()) {
        const Value value = me.valueForProperty(property);
        if (const auto* const entries = value.as<ZRMultiValue>())
            for (const auto& identifier : entries->_allIdentifiers())
                _privateFields += me._showField(property, identifier) ? 0 : 1;
    }
}

void ExportLosses::countUnknownLabels(const ZRPerson& person)
{
    for (const auto property : labelled) {
        const Value value = person.valueForProperty(property);
        const auto* const entries = value.as<ZRMultiValue>();
        if (entries && !hasLabels21(property, *entries))
            ++_notCarried[fmt::format("{} labels", property)];
    }
}

bool ExportLosses::hasPicture(const ZRPerson& person) const
{
    return !_pictures.empty() && _pictures.contains(person.uniqueId().substr(0, kNameOfPicture));
}

std::string ExportLosses::heldBack() const
{
    std::string text;
    if (_notes > 0)
        append(text, "notes of " + cards(_notes));
    if (_heldPictures > 0)
        append(text, "pictures of " + cards(_heldPictures));
    if (_privateFields > 0)
        append(text, fmt::format("{} {} of Me", _privateFields, _privateFields == 1 ? "field" : "fields"));
    return text;
}

std::string ExportLosses::notCarried() const
{
    std::string text;
    for (const auto& [name, count] : _notCarried)
        append(text, fmt::format("{} ({})", name, cards(count)));
    return text;
}
