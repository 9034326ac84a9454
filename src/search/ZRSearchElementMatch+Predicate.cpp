// What a comparison asks of the store: the kinds of properties, and what cannot be asked.
#include "core/ZRConstants.h"
#include "core/ZRLog.h"
#include "core/ZRRecord.h"
#include "core/ZRStringAdditions.h"
#include "search/SearchPredicates.h"
#include "search/ZRSearchElementMatch.h"
#include "store/ZRCustomProperties.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"
#include "store/ZRRecordObjectStoreFactoryImpl.h"
#include "store/ZRRoster.h"

#include <algorithm>
#include <array>

using objectstore::AttributeType;
using objectstore::Comparator;
using objectstore::Entity;
using objectstore::PredicateRef;
using objectstore::Slot;
using objectstore::StorePredicate;
using objectstore::TextOption;
using platform::Ref;
using platform::Value;

struct ZRSearchElementMatch::Question : SearchQuestion { };

namespace {

/// The entities whose properties can be searched.
constexpr std::array searchedEntities{zr::kZRObjectStoreContactEntityName, zr::kZRObjectStoreGroupEntityName,
    zr::kZRObjectStoreSmartGroupEntityName, zr::kZRObjectStoreSubscribedContactEntityName,
    zr::kZRObjectStoreSubscribedGroupEntityName};

/// What a search of whole addresses goes through, in this order.
constexpr std::array<std::string_view, 7> addressKeys{
    "street", "city", "state", "zipCode", "countryName", "region", "sama"};

/// Everything of a card is in its index text, folded.
PredicateRef wholeCard(const Entity& entity, const Value& value, bool isNegation)
{
    if (!value.isString() || !entity.slot("contactIndex"))
        return nullptr;
    auto contains = StorePredicate::compare("contactIndex.stringForIndexing", Comparator::contains,
        Value(ZROSRecord::newNormalizedSearchString(value.asText())));
    return isNegation ? StorePredicate::negation(std::move(contains)) : contains;
}

bool isMembership(ZRSearchComparison comparison)
{
    return comparison == kZRMemberOfGroup || comparison == kZRNotMemberOfGroup;
}

/// What "no value" is compared as; absent when no record matches that.
std::optional<ZRSearchComparison> comparisonWithoutValue(ZRSearchComparison comparison)
{
    switch (comparison) {
    case kZREqual:
    case kZREqualCaseInsensitive:
    case kZRContainsSubString:
    case kZRContainsSubStringCaseInsensitive:
        return kZREqual;
    case kZRNotEqual:
    case kZRDoesNotContainSubString:
    case kZRDoesNotContainSubStringCaseInsensitive:
    case kZRNotEqualCaseInsensitive:
        return kZRNotEqual;
    default:
        return std::nullopt;
    }
}

bool isNoValue(const Value& value)
{
    return value.isNothing() || (value.isString() && value.asText().empty());
}

/// Days are stored as noon GMT and searched as noon of the day in the local zone.
bool isDays(const Slot& key) { return key.key == "birthday" || key.key == "dates"; }

} // namespace

ZRSearchElement::Predicate ZRSearchElementMatch::_predicateForImplClass(
    const Entity& implClass, ZRManagedObjectContext& context) const
{
    try {
        return converted(implClass, context);
    } catch (const std::exception& failure) {
        logFailedConversion(*this, failure);
        return nullptr;
    }
}

ZRSearchElement::Predicate ZRSearchElementMatch::converted(
    const Entity& implClass, ZRManagedObjectContext& context) const
{
    const auto* recordClass = ZRRecordObjectStoreFactoryImpl::publicRecordClassForImplClass(implClass);
    const auto classes = searchRecordClasses();
    if (std::ranges::find(classes, recordClass) == classes.end())
        return StorePredicate::never();
    if (isWholeCard())
        return wholeCard(implClass, _definition.value, _isNegation());
    if (std::ranges::find(searchedEntities, implClass.name()) == searchedEntities.end())
        return nullptr;

    Question question;
    question.comparison = _definition.comparison;
    if (_definition.diacriticInsensitive)
        question.caseOption = TextOption::ignoringCaseAndDiacritics;
    if (_definition.label && !_definition.label->empty())
        question.label = _definition.label;
    if (!isNoValue(_definition.value)) {
        if (isMembership(question.comparison))
            return nts_predicateForMembership(implClass, context);
        question.value = _definition.value;
    } else if (const auto comparison = comparisonWithoutValue(question.comparison)) {
        question.comparison = *comparison;
    } else {
        return StorePredicate::never();
    }

    const std::string property = _propertyOrEmpty();
    if (const auto* place = ZROSRecord::keyForProperty(property, implClass))
        return ofKnownKey(*place, std::move(question));
    const Ref<ZRRoster> roster =
        context.owningRoster() ? Ref<ZRRoster>(context.owningRoster()) : ZRRoster::nts_SharedRoster();
    const auto definition = roster
        ? ZRCustomProperties::customPropertyDefinitionWithName(property, *roster, implClass.name())
        : nullptr;
    return definition ? _predicateForCustomProperty(*definition, question) : nullptr;
}

ZRSearchElement::Predicate ZRSearchElementMatch::ofKnownKey(
    const ZRPropertyPlace& place, Question question) const
{
    const std::string property = _propertyOrEmpty();
    const bool isAddress = property == zr::kZRAddressProperty;
    if (!isAddress && _definition.key && !_definition.key->empty())
        return nullptr;
    if (isDays(*place.key)) {
        question.isOfDays = true;
        question.value = ZRRecord::dateByNormalizingToGMT(question.value);
    }
    if (isAddress)
        return ofAddresses(place, question);
    if (place.entity && !place.entityKey) {
        ZRDebugLog("Cannot predicatify search with {}, {}, {}, {}", property, place.key->key,
            place.entity->name(), "");
        return nullptr;
    }
    // What is no date has no distance from today: such a search is left to memory.
    const Slot& compared = place.entity ? *place.entityKey : *place.key;
    if (isInterval(question.comparison) && compared.type != AttributeType::date
        && compared.key != "aggregateModificationDate")
        return nullptr;
    if (!place.service.empty())
        return _predicateForMessagingAddressService(place.service, question);
    if (!place.isMultiValue)
        return _predicateForKeyPath(
            place.entity ? place.key->key + "." + place.entityKey->key : place.key->key, question);
    std::string relativeKey = place.entityKey->key;
    if (property == zr::kZREmailProperty && question.value.isString()
        && (question.comparison == kZREqualCaseInsensitive
            || question.comparison == kZRNotEqualCaseInsensitive)) {
        question.comparison = question.comparison == kZREqualCaseInsensitive ? kZREqual : kZRNotEqual;
        question.value = Value(zrCaseNormalizedCopy(question.value.asText()));
        relativeKey = "addressNormalized";
    }
    return _predicateForToManyRelationshipName(place.key->key, relativeKey, question);
}

ZRSearchElement::Predicate ZRSearchElementMatch::ofAddresses(
    const ZRPropertyPlace& place, const Question& question) const
{
    if (isInterval(question.comparison))
        return nullptr;
    const auto rowsFor = [&](std::string_view key) {
        return _predicateForToManyRelationshipName(place.key->key, std::string(key), question);
    };
    if (_definition.key && !_definition.key->empty()) {
        const auto* attribute = ZROSRecord::keyForProperty(*_definition.key, *place.entity);
        return attribute ? rowsFor(attribute->key->key) : nullptr;
    }
    std::vector<PredicateRef> parts;
    for (const std::string_view key : addressKeys) {
        parts.push_back(rowsFor(key));
        if (!parts.back())
            return nullptr;
    }
    const bool isAny = question.comparison == kZRNotEqual || question.comparison == kZRContainsSubString
        || question.comparison == kZRContainsSubStringCaseInsensitive;
    return isAny ? StorePredicate::any(std::move(parts)) : StorePredicate::all(std::move(parts));
}

ZRSearchElement::Predicate ZRSearchElementMatch::_predicateForKeyPath(
    const std::string& keyPath, const Question& question) const
{
    if (keyPath == "aggregateModificationDate") {
        const auto modified = StorePredicate::isPresent("modificationDate");
        const auto ofModification = _predicateForKeyPath("modificationDate", question);
        const auto ofCreation = _predicateForKeyPath("creationDate", question);
        if (!ofModification || !ofCreation)
            return nullptr;
        return StorePredicate::any({StorePredicate::all({modified, ofModification}),
            StorePredicate::all({StorePredicate::negation(modified), ofCreation})});
    }
    const auto test = positiveTest(keyPath, question);
    if (!test || !wantsNone(question.comparison))
        return test;
    const auto negated = StorePredicate::negation(test);
    if (question.value.isNothing())
        return negated;
    // What is not there is not equal and contains nothing, but is at no distance from today.
    if (isInterval(question.comparison))
        return StorePredicate::all({StorePredicate::isPresent(keyPath), negated});
    const auto withAbsent = StorePredicate::any({negated, StorePredicate::isAbsent(keyPath)});
    const auto dot = keyPath.find('.');
    if (dot == std::string::npos)
        return withAbsent;
    return StorePredicate::all({StorePredicate::isPresent(keyPath.substr(0, dot)), withAbsent});
}

ZRSearchElement::Predicate ZRSearchElementMatch::_predicateForToManyRelationshipName(
    const std::string& relationship, const std::string& relativeKeyPath, const Question& question) const
{
    return rowsPredicate({relationship, relativeKeyPath}, question);
}

ZRSearchElement::Predicate ZRSearchElementMatch::_predicateForMessagingAddressService(
    std::string_view service, const Question& question) const
{
    return rowsPredicate(
        {"messagingAddresses", "address",
            StorePredicate::compare("service.serviceName", Comparator::equal, Value(service))},
        question);
}

ZRSearchElement::Predicate ZRSearchElementMatch::_predicateForCustomProperty(
    objectstore::StoreObject& definition, const Question& question) const
{
    const auto type = static_cast<ZRPropertyType>(definition.integer(customPropertySlots().valueType));
    const auto key = customPropertyValueKeyNameForPropertyType(type);
    // The bytes of a list or dictionary cannot be looked into.
    if (!key || key->isSerializedPropertyList || (_definition.key && !_definition.key->empty())
        || (isInterval(question.comparison) && zrBaseType(type) != kZRPropertyTypeDate))
        return nullptr;
    return rowsPredicate({"customProperties", std::string(key->key),
                             StorePredicate::compare("customProperty", Comparator::equal,
                                 Value(objectstore::ObjectRef(&definition)))},
        question);
}

std::vector<std::string> ZRSearchElementMatch::prefetchingRelationshipKeyPathsForImplClass(
    const Entity& implClass, ZRRoster& roster) const
{
    const auto* place = ZROSRecord::keyForProperty(_propertyOrEmpty(), implClass);
    if (!place || !place->entity || !ZROSRecord::zrEntityKnowsKey(place->key->key, implClass.name(), roster)
        || place->key->key == "rosterSource" || place->key->key == "sourceWhereContactIsMe")
        return {};
    return {place->key->key};
}
