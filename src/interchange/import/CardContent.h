// What a card says, for comparing it with another of any roster.
#pragma once

#include "core/ZRPerson.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace interchange {

/// Everything that an import can bring to a card: its properties less its id and its dates, and its picture.
///
/// It is a copy of the moment at which it was made; only the picture is read when it is first asked for.
/// Nothing private to the system (such as the mark of the last import) is in it.
///
/// Ownership: shares ownership of the person.
/// Threads:   like any plain value; making it takes the global lock.
/// Errors:    a person that was deleted elsewhere says nothing.
class CardContent {
public:
    /// `properties` are those of people in the person's roster.
    CardContent(platform::Ref<const ZRPerson> person, const ZRPropertyTypes& properties);

    /// The properties with a value, by name.
    const std::vector<std::pair<std::string, platform::Value>>& properties() const { return _properties; }
    /// Absent for a property without a value, and for a multi-value without entries.
    const platform::Value& value(std::string_view property) const;
    const platform::Value& picture() const;
    void setPicture(const platform::Value& picture) { _picture = picture; }

    /// The same values, entries with their labels in order, and the same picture. Identifiers of entries and
    /// which of them is primary do not count.
    bool says(const CardContent& other) const;
    /// Whether an update by `incoming` would bring nothing here: no single value of it, no entry, note or
    /// picture is new. A note is not that stands in the one here already, as a former update appended it.
    bool knowsAllOf(const CardContent& incoming) const;
    bool knowsNoteOf(const CardContent& incoming) const;

private:
    platform::Ref<const ZRPerson> _person;
    std::vector<std::pair<std::string, platform::Value>> _properties;
    mutable std::optional<platform::Value> _picture;
};

/// Whether two values of one property say the same, whatever the identifiers of entries.
bool saysSame(const platform::Value& a, const platform::Value& b);

} // namespace interchange
