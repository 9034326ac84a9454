// Properties that programs declare at run time: their definitions, and their part in a class's property
// types.
#pragma once

#include "core/ZRPropertyType.h"
#include "core/ZRRecordClass.h"
#include "objectstore/StoreObject.h"

#include <map>
#include <string>
#include <string_view>

class ZRRoster;

/// Definitions are kept for good and read once a roster: the cache is dropped when new ones were made.
///
/// Ownership: definitions belong to the roster's context; the cache shares ownership.
/// Threads:   the global lock is held, unless an operation takes `acquireLock`.
/// Errors:    a failed read is logged and counts as "no custom properties".
namespace ZRCustomProperties {

using Definitions = std::map<std::string, objectstore::ObjectRef, std::less<>>;

/// All of the entity, by name.
const Definitions& customPropertyDefinitionsWithRoster(ZRRoster& roster, std::string_view entityName);
/// The one of that name, or null.
objectstore::ObjectRef customPropertyDefinitionWithName(
    std::string_view name, ZRRoster& roster, std::string_view entityName);
/// Its type, or 0.
ZRPropertyType typeOfCustomProperty(ZRRoster& roster, std::string_view entityName, std::string_view name);

/// The built-in types of the class, with the custom ones over them. Empty for a class without a table.
ZRPropertyTypes propertyTypesForClass(const ZRRecordClass& recordClass, ZRRoster& roster, bool acquireLock);

/// Declares what the class does not have yet; answers how many were added, 0 when the save failed. A value
/// that is not a number is not declared; an existing property of another type is logged and stays.
std::int64_t addPropertiesAndTypes(const platform::Value& typesByName, const ZRRecordClass& recordClass,
    ZRRoster& roster, bool acquireLock, bool save);

} // namespace ZRCustomProperties
