// A card's values, kept to be set on a person later.
#pragma once

#include "core/ZRExport.h"
#include "interchange/vcard/ZRVCardValueSetter.h"
#include "platform/value/Object.h"

#include <cstdint>
#include <string_view>
#include <vector>

class ZRPerson;
class ZRRoster;

/// Keeps what a card sets, in its order, so that the card can be read where no person may be made: on another
/// thread, without the global lock.
///
/// Ownership: owns its values. Property names are the words of the system, which live for ever.
/// Threads:   one at a time; it may go from one to another.
/// Errors:    as of the person, once the values are set on it.
class ZR_EXPORT CardRecording final : public ZRVCardValueSetter {
public:
    void setValue(platform::Value value, std::string_view property) override;
    platform::Value valueForProperty(std::string_view property) const override;
    void setImageData(platform::Value data) override;
    /// The family name or the given name alone: enough for whoever asks whether there is one.
    std::optional<std::string> fullName() const override;
    void setValueInTemporaryCache(platform::Value value, std::string_view property) override;

    /// Sets everything again, in the same order.
    void playTo(ZRVCardValueSetter& target) const;
    /// A new person of `roster`, in its last store, with these values; absent when the roster makes none.
    platform::Ref<ZRPerson> makePerson(ZRRoster& roster) const;

private:
    enum class Kind : std::uint8_t { value, picture, temporary };
    struct Setting {
        Kind kind;
        std::string_view property;
        platform::Value value;
    };

    void record(Kind kind, platform::Value value, std::string_view property);

    std::vector<Setting> _settings;
};
