// How one property is spelled in a vCard 4.0: parameters, escapes, folding.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace vcard {

/// One property of a vCard 4.0 in the making (RFC 6350 §3.3).
///
/// `Line40(to, "TEL").with("TYPE", "home").text("555")` appends "TEL;TYPE=home:555". Text is escaped (§3.4),
/// and the line is folded at 75 octets, never inside a character (§3.2).
///
/// Ownership: borrows the text that it appends to.
/// Threads:   a plain value.
/// Errors:    none.
class Line40 {
public:
    /// The property stands in item group `group`, unless that is 0.
    Line40(std::string& to, std::string_view name, std::int64_t group = 0);

    /// A parameter, unless its value is empty. The value needs no quotes: it is words.
    Line40& with(std::string_view parameter, std::string_view value);

    // ---- the value, which ends the line

    /// A ";" in it stays as it is: some readers take no escape of it where it parts nothing.
    void text(std::string_view text);
    /// Nothing of a URI is escaped.
    void uri(std::string_view uri);
    /// Fields, or the entries of a list, with `separator` between them, which is escaped in each.
    void texts(std::span<const std::string_view> texts, char separator);

private:
    void end();

    std::string& _to;
    std::string _line;
};

} // namespace vcard
