// A record as JSON for programs, and as text for people.
#pragma once

#include "Command.h"

/// {"id", "kind", "name", "properties", "groups"}: property names as keys, absent ones left out.
Json cardJson(ZRRecord& record);

/// A property's value: days of the calendar, moments in ISO 8601, data in Base64.
Json valueJson(const platform::Value& value, std::string_view property);

/// The card as a person reads it: the name, then one line a value, the label behind the property.
std::string cardText(ZRRecord& record);

/// The properties of a class that say something to a person who reads a card, in the order of reading.
std::vector<std::string> readableProperties(const ZRRecordClass& recordClass, ZRRoster* roster);

/// What a list shows for the record.
std::string displayName(ZRRecord& record);
/// "Friends (1A2B3C4D)".
std::string nameAndId(ZRRecord& record);

/// What a command that changed a card prints: `done` and the card's name, or the card as JSON.
void printCardDone(const Options& options, std::string_view done, ZRRecord& record);
