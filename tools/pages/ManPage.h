// What a manual page says of a command: the sections that repeat the table of commands.
#pragma once

#include "CommandTable.h"

#include <map>
#include <string>
#include <vector>

/// A section of a manual page, its heading line included.
struct ManSection {
    /// "SYNOPSIS"; empty for what stands in front of the first heading.
    std::string title;
    std::string text;
};

/// A page in its sections; their texts one behind the other are the page.
std::vector<ManSection> sectionsOf(const std::string& page);

/// The page of a command with the sections that its table tells put in (NAME, SYNOPSIS, OPTIONS, EXAMPLES,
/// EXIT STATUS); the others, which people write, as they are in `page`. A page that is not there yet is
/// begun.
std::string pageOf(const Command& command, const std::string& page);
/// The same for the tool itself.
std::string pageOfTool(const std::string& page);

/// A text as troff prints it.
std::string roff(std::string_view text);
