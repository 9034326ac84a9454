// A group as JSON for programs, and as text for people.
#pragma once

#include "Command.h"

class ZRGroup;

/// As `cardJson`, with "members" and "subgroups", their ids.
Json groupJson(ZRGroup& group);
/// The name, then a line for each subgroup and member, and the id.
std::string groupText(ZRGroup& group);
/// What a command that changed a group prints: `done` and the group's name, or the group as JSON.
void printChanged(const Options& options, std::string_view done, ZRGroup& group);
