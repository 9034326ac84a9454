// What tests read of files: their bytes, or cases in which lines go in and others come out.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace test {

/// The bytes of a file. Throws where it cannot be read.
inline std::string contentsOf(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw std::runtime_error("cannot read " + file.string());
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// Each line ends in LF.
struct TextCase {
    /// For messages: the line of the file that it begins in, and what goes in.
    std::string message() const { return place + "\n" + input; }

    std::string place, input, expected;
};

/// The cases of a file. Empty lines part them; what comes out stands behind "=> ", a lone "=>" where nothing
/// does. A line that begins with "#" says why, and lines without a "=>" below them are for people.
inline std::vector<TextCase> casesIn(const std::filesystem::path& file)
{
    std::vector<TextCase> cases;
    std::istringstream lines(contentsOf(file));
    const auto placeOf = [&](std::size_t line) {
        return file.filename().string() + ":" + std::to_string(line);
    };
    TextCase next{placeOf(1), {}, {}};
    std::size_t number = 0;
    bool isCase = false;
    for (std::string line; std::getline(lines, line) || isCase;) {
        ++number;
        if (line.empty() && isCase)
            cases.push_back(next);
        if (line.empty()) {
            next = {placeOf(number + 1), {}, {}};
            isCase = false;
        } else if (line.starts_with("=>")) {
            isCase = true;
            next.expected += line.size() > 3 ? line.substr(3) + "\n" : "";
        } else if (!line.starts_with('#')) {
            next.input += line + "\n";
        }
    }
    if (cases.empty())
        throw std::runtime_error("no cases in " + file.string());
    return cases;
}

} // namespace test
