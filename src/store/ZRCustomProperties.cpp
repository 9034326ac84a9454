// Properties that programs declare at run time.
#include "store/ZRCustomProperties.h"

#include "core/BuiltInProperties.h"
#include "core/ZRConstants.h"
#include "core/ZRGlobalLock.h"
#include "platform/run/Log.h"
#include "store/ZRModelSlots.h"
#include "store/ZRRecordObjectStoreFactoryImpl.h"
#include "store/ZRRosterState.h"

#include <fmt/format.h>

#include <exception>
#include <optional>

using objectstore::Comparator;
using objectstore::ObjectRef;
using objectstore::StorePredicate;
using platform::Value;

namespace ZRCustomProperties {

namespace {

std::string_view entityNameOf(const ZRRecordClass& recordClass)
{
    const auto* entity = ZRRecordObjectStoreFactoryImpl::implClassForPublicRecordClass(recordClass);
    return entity ? std::string_view(entity->name()) : std::string_view();
}

Definitions fetched(ZRRoster& roster, std::string_view entityName)
{
    Definitions definitions;
    const auto context = roster.managedObjectContext();
    if (!context || entityName.empty())
        return definitions;
    const auto ofType = StorePredicate::compare("recordType", Comparator::equal, Value(entityName));
    for (auto& definition :
        context->zrObjectsForPredicate(ofType, zr::kZRObjectStoreCustomPropertyEntityName, {}, false)) {
        std::string name(definition->text(customPropertySlots().propertyName));
        definitions.emplace(std::move(name), std::move(definition));
    }
    return definitions;
}

/// The definition of that name and type, made for all programs at once: two that declare the same agree.
bool declare(ZRRoster& roster, std::string_view entityName, const std::string& name, const Value& type)
{
    const auto context = roster.managedObjectContext();
    const auto definition =
        context->sharedObject(customPropertySlots().entity, {Value(entityName), Value(name)});
    if (!definition) {
        platform::log(fmt::format("Cannot declare the property {}: {}", name, definition.error().text));
        return false;
    }
    const auto& valueType = customPropertySlots().valueType;
    if ((*definition)->isAbsent(valueType))
        (*definition)->setValue(valueType, Value(type.asInteger()));
    return true;
}

} // namespace

const Definitions& customPropertyDefinitionsWithRoster(ZRRoster& roster, std::string_view entityName)
{
    auto& state = ZRRosterAccess::state(roster);
    const platform::Lock guard(state.monitor);
    const auto known = state.customProperties.find(entityName);
    if (known != state.customProperties.end())
        return known->second;
    return state.customProperties.emplace(entityName, fetched(roster, entityName)).first->second;
}

ObjectRef customPropertyDefinitionWithName(
    std::string_view name, ZRRoster& roster, std::string_view entityName)
{
    const auto& known = customPropertyDefinitionsWithRoster(roster, entityName);
    const auto at = known.find(name);
    return at == known.end() ? nullptr : at->second;
}

ZRPropertyType typeOfCustomProperty(ZRRoster& roster, std::string_view entityName, std::string_view name)
{
    const ObjectRef definition = customPropertyDefinitionWithName(name, roster, entityName);
    return definition ? static_cast<ZRPropertyType>(definition->integer(customPropertySlots().valueType))
                      : kZRPropertyTypeUnknown;
}

ZRPropertyTypes propertyTypesForClass(const ZRRecordClass& recordClass, ZRRoster& roster, bool acquireLock)
{
    const auto collect = [&]() ZR_NTS {
        ZRPropertyTypes types = builtInPropertyTypes(recordClass.name);
        if (types.empty())
            return types;
        try {
            for (const auto& [name, definition] :
                customPropertyDefinitionsWithRoster(roster, entityNameOf(recordClass)))
                types[name] =
                    static_cast<ZRPropertyType>(definition->integer(customPropertySlots().valueType));
        } catch (const std::exception& failure) {
            platform::log(fmt::format("ZROSR Custom Property exception: {}", failure.what()));
            types.clear();
        }
        return types;
    };
    if (acquireLock)
        return locked(roster, ZRAccess::read, collect);
    zrGlobalLockIsHeld();
    return collect();
}

std::int64_t addPropertiesAndTypes(
    const Value& typesByName, const ZRRecordClass& recordClass, ZRRoster& roster, bool acquireLock, bool save)
{
    const auto add = [&]() ZR_NTS -> std::int64_t {
        const std::string_view entityName = entityNameOf(recordClass);
        const auto known = propertyTypesForClass(recordClass, roster, false);
        const auto* asked = typesByName.asDictionary();
        std::int64_t added = 0;
        for (std::size_t i = 0; asked && i < asked->count(); ++i) {
            const auto& [name, type] = asked->entries()[i];
            const auto there = typeOfCustomProperty(roster, entityName, name);
            if (there != kZRPropertyTypeUnknown && type.isNumber() && there != type.asInteger())
                platform::log(fmt::format(
                    "Property already exists: {} type: {} (requested: {})", name, there, type.asInteger()));
            if (!known.contains(name) && type.isNumber() && declare(roster, entityName, name, type))
                ++added;
        }
        if (added == 0)
            return 0;
        roster.clearCustomPropertyCaches();
        if (save && !(ZRRoster::isInert() && !roster.isSharedInstance())
            && !roster.nts_SaveWithFileLock(acquireLock, true, Value())) {
            platform::log(fmt::format("Error saving Roster <{}>", roster.databaseDirectory()));
            return 0;
        }
        return added;
    };
    if (acquireLock)
        return locked(roster, ZRAccess::write, add);
    zrGlobalLockIsHeld();
    return add();
}

} // namespace ZRCustomProperties
