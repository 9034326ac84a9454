// The files that the library carries in itself, and the texts it shows to people.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// The bytes of the resource `name`.`extension`, where `name` may begin with folders
/// ("strings/en/ZRStrings"). A file of that name under "Roster" in a library directory, the user's first,
/// stands in for the library's own.
std::optional<std::string> resource(std::string_view name, std::string_view extension);
/// The names, with folders and extensions, of the resources that the library carries.
std::vector<std::string_view> embeddedResourceNames();

/// One table of texts: lines "key=value" in UTF-8. "\n", "\t", "\=" and "\\" are escapes; a line that begins
/// with
/// "#" and an empty one say nothing; of two lines of one key the last counts.
std::map<std::string, std::string, std::less<>> parseStringTable(std::string_view text);

/// The texts in the languages of one user: files "strings/<language>/<table>.strings".
///
/// Ownership: keeps the tables that it has read.
/// Threads:   any.
/// Errors:    none; a missing table is an empty one.
class StringTables {
public:
    /// `languages` are tried in order; English follows by itself.
    explicit StringTables(std::vector<std::string> languages);
    ~StringTables();

    /// Those of the user's languages. Never destroyed.
    static StringTables& shared();

    /// The text in the first language that has one.
    std::optional<std::string> find(std::string_view key, std::string_view table) const;
    /// The same, or else `missing`, or else the key itself.
    std::string string(
        std::string_view key, std::string_view table, std::optional<std::string_view> missing = {}) const;

    const std::vector<std::string>& languages() const { return _languages; }

private:
    struct State;
    std::vector<std::string> _languages;
    std::unique_ptr<State> _state;
};

/// The user's languages by the environment, in gettext's order: LANGUAGE (a list with colons, which ends at
/// "C"), else LC_ALL, LC_MESSAGES or LANG; "pt_BR.UTF-8" gives "pt_BR" and "pt". None where the locale is
/// "C", or none is chosen: then LANGUAGE says nothing either.
std::vector<std::string> userLanguages();

} // namespace platform
