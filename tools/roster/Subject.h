// Which part of a card a text on the command line names: 'Property[.Key][;label]'.
#pragma once

#include "Command.h"

/// What a subject names; key and label are empty where it names none.
struct Subject {
    std::string property;
    std::string key;
    std::string label;
    ZRPropertyType type = kZRPropertyTypeUnknown;
};

/// The subject that `text` names. Property is a name as `roster show --json` prints it, or as the user's
/// language has it, in any case; a label is one of the property's own in plain words ("home", "work") or a
/// custom one. An unknown property raises a Failure with status 2 that says which there are; `place` stands
/// in front of it.
Subject subjectOf(ZRRoster& roster, const std::string& text, const std::string& place);

/// The value that `text` is for a property of that type: text, a number, or the noon of a calendar day.
/// Anything else raises a Failure with status 2; `place` stands in front of it.
platform::Value valueOfText(ZRPropertyType type, const std::string& text, const std::string& place);
