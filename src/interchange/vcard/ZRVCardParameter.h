// A parameter of a vCard line, or one entry that the card's end makes part of a multi-value.
#pragma once

#include "platform/value/Value.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A name with types. Both versions of the format read alike: a bare `HOME` (vCard 2.1) has the types HOME, a
/// `TYPE=HOME` (RFC 2426 §4) the types TYPE and HOME.
///
/// As an entry its name is the label, and value and group are set too.
///
/// Ownership: owns its texts, shares its value.
/// Threads:   one at a time.
/// Errors:    none.
class ZRVCardParameter {
public:
    /// The name, when there is one, is the first type.
    explicit ZRVCardParameter(std::optional<std::string> name) : _name(std::move(name)) { }
    ZRVCardParameter(
        std::string_view label, platform::Value value, const std::optional<std::string>& grouping)
        : _name(label), _grouping(grouping), _value(std::move(value))
    {
    }

    const std::optional<std::string>& name() const { return _name; }
    const std::optional<std::string>& grouping() const { return _grouping; }
    const platform::Value& value() const { return _value; }
    /// Whether the entry is to be the primary one. No line of a vCard sets it: TYPE=PREF is a type like
    /// others.
    bool primary() const { return _primary; }

    void setGrouping(std::optional<std::string> grouping) { _grouping = std::move(grouping); }
    void setValue(platform::Value value) { _value = std::move(value); }
    void setPrimary(bool primary) { _primary = primary; }

    std::vector<std::string> types() const;
    void addType(std::string type) { _added.push_back(std::move(type)); }
    void addTypes(const std::vector<std::string>& types);
    void removeAllTypes();
    /// Calls `visit` with each type, in order, until it answers true.
    template <class Visit>
    void forEachType(Visit visit) const
    {
        if (_nameIsType && _name && visit(std::string_view(*_name)))
            return;
        for (const auto& type : _added)
            if (visit(std::string_view(type)))
                return;
    }

    /// As new, for another line with a parameter of this name.
    void reset();
    std::string description() const;

private:
    std::optional<std::string> _name;
    std::optional<std::string> _grouping;
    platform::Value _value;
    /// The types behind the name.
    std::vector<std::string> _added;
    bool _nameIsType = true;
    bool _primary = false;
};
