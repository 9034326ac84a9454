// What one logical line says: group, name, parameters and the value as it was written.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vcard::prepare {

/// How a line's value was packed for the way through seven-bit mail.
enum class Transfer : std::uint8_t { plain, quotedPrintable, base64 };

/// The parameters that mean something here.
enum class ParameterName : std::uint8_t {
    other,
    bare,
    type,
    pref,
    altid,
    encoding,
    charset,
    label,
    geo,
    tz,
    sortAs,
    value
};

/// `NAME=value`, or a bare word as vCard 2.1 writes it: then the name is empty and the word is the value.
struct Parameter {
    std::string_view name;
    /// As written, quotes included.
    std::string_view value;
    ParameterName known = ParameterName::bare;
};

/// One property line, taken apart but not decoded.
///
/// It judges nothing: unknown names and parameters are held like known ones.
///
/// Ownership: borrows the line it was parsed from.
/// Threads:   a plain value.
/// Errors:    `parse` answers false for a line without a colon, and the property is then of no use.
struct Property {
    std::string_view group;
    std::string_view name;
    std::vector<Parameter> parameters;
    std::string_view value;
    Transfer transfer = Transfer::plain;
    /// The value of CHARSET, or empty.
    std::string_view charset;

    /// Refills this property from a line; the room of `parameters` is used again.
    bool parse(std::string_view line);

    /// The value of the first parameter of that name without its quotes, or empty.
    std::string_view parameter(ParameterName parameterName) const;

    /// The line again, without what blanks stood around its parts.
    std::string text() const;
};

/// Where the colon in front of the value is, or npos. A colon within a quoted parameter is none of these,
/// unless the quotes are not closed.
std::size_t valueColon(std::string_view line);

/// The transfer that the part in front of the colon declares: `ENCODING=`, or a bare word (vCard 2.1).
Transfer declaredTransfer(std::string_view header);

/// Without the quotes around it, if there are any.
std::string_view unquoted(std::string_view value);

/// RFC 6868: "^n" is a line break, "^^" a caret and "^'" a double quote; any other caret stands for itself.
std::string decodedCarets(std::string_view value);

} // namespace vcard::prepare
