// Which properties each record class has from the start.
#pragma once

#include "core/ZRPropertyType.h"

#include <span>
#include <string_view>

/// One property of a class.
struct BuiltInProperty {
    std::string_view name;
    ZRPropertyType type;
};

/// The table of a record class by its name, such as "ZRPerson". Empty for a class without one, which is
/// logged, since ZRRecord itself and an unknown class have no records.
ZR_EXPORT std::span<const BuiltInProperty> builtInProperties(std::string_view recordClass);

/// The type in that table; 0 when the class has no such property. Logs nothing.
ZR_EXPORT ZRPropertyType builtInTypeOfProperty(std::string_view recordClass, std::string_view property);

/// The same table as a map, to which a roster adds its custom properties.
ZR_EXPORT ZRPropertyTypes builtInPropertyTypes(std::string_view recordClass);
