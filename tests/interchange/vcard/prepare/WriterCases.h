// One card through the preparation: its lines and the report, as tables of cases have them.
#pragma once

#include "PreparedFile.h"

#include <gmock/gmock.h>

#include <span>
#include <string>
#include <string_view>

namespace vcard::prepare {

/// The lines between VERSION and END, ended by LF, and behind "--" the report without file and place. The
/// canonical card is one that stays as it is.
inline std::string outcome(std::string_view version, std::string_view lines)
{
    const auto file = prepared(card(version, lines));
    EXPECT_EQ(prepared(file.text()).text(), file.text());
    EXPECT_EQ(prepared(file.text()).report, "");
    std::string text;
    for (const char c : file.text())
        if (c != '\r')
            text += c;
    const auto start = text.find('\n', text.find("VERSION:3.0")) + 1;
    text = text.empty() ? text : text.substr(start, text.find("END:VCARD") - start);
    for (std::size_t at = 0; at < file.report.size(); at = file.report.find('\n', at) + 1) {
        const auto words = file.report.find(": ", file.report.find("line ", at)) + 2;
        text += "--" + file.report.substr(words, file.report.find('\n', words) - words) + "\n";
    }
    return text;
}

struct Case {
    const char* version;
    const char* lines;
    const char* expected;
};

inline void check(std::span<const Case> cases)
{
    for (const auto& [version, lines, expected] : cases)
        EXPECT_EQ(outcome(version, lines), expected) << version << "\n" << lines;
}

} // namespace vcard::prepare
