// The least that reading and writing cards can cost: every line as owned strings, and no meaning.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace bench {

struct CardLine {
    std::string group, name;
    std::vector<std::pair<std::string, std::string>> parameters;
    std::string value;
};

struct LineCard {
    std::vector<CardLine> lines;
};

/// Unfolds, splits into group, name, parameters and value, and takes the escapes out. It decodes nothing and
/// knows no property, so a reader that gives dictionaries cannot be faster.
std::vector<LineCard> readLineModel(std::string_view bytes);

/// Writes them back with LF and "," escaped, folded at 75 octets: what a writer does who knows nothing.
std::string writeLineModel(const std::vector<LineCard>& cards);

} // namespace bench
