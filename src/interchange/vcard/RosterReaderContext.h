// What a reader of vCards must know, from the preferences of a roster.
#pragma once

#include "core/ZRExport.h"
#include "interchange/vcard/VCardReaderContext.h"
#include "platform/value/Object.h"

class ZRRoster;

/// The answers of one roster as they are when this is made: an import asks for each address of each card.
///
/// Ownership: owns its answers.
/// Threads:   any; it never changes.
/// Errors:    none.
class ZR_EXPORT RosterReaderContext final : public VCardReaderContext {
public:
    explicit RosterReaderContext(ZRRoster& roster);

    std::string defaultCountryCode() const override { return _countryCode; }
    std::int64_t defaultNameOrdering() const override { return _nameOrdering; }
    std::optional<std::string> preferred21Encoding() const override { return _encoding; }
    /// The resource of that name with the extension "tiff".
    platform::Value builtInPicture(std::string_view name) const override;

private:
    const std::string _countryCode;
    const std::int64_t _nameOrdering;
    const std::optional<std::string> _encoding;
};
