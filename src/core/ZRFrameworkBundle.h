// The files and texts that come with the library.
#pragma once

#include "core/ZRExport.h"

#include <optional>
#include <string>
#include <string_view>

/// The library's own resources: string tables, formats, sample cards, default preferences.
///
/// It is a name for what the platform looks up, so that callers need not know where resources are kept.
///
/// Ownership: one for the process, never destroyed.
/// Threads:   any.
/// Errors:    none; what is missing is absent.
class ZR_EXPORT ZRBundle {
public:
    /// The version of this library, such as "1.0.0".
    std::string version() const;
    /// The bytes of a resource, such as "ZRAddressFormats" of type "plist".
    std::optional<std::string> resource(std::string_view name, std::string_view type) const;
    /// The text of `key` in the user's language, or else `missing`.
    std::string localizedString(std::string_view key, std::string_view table, std::string_view missing) const;
    /// The same; a text that is missing is its key.
    std::string localizedString(std::string_view key, std::string_view table) const
    {
        return localizedString(key, table, key);
    }
};

ZR_EXPORT const ZRBundle& ZRFrameworkBundle();
