// The Me card as it is now, with the vCard that others get of it.
#pragma once

#include "core/ZRPerson.h"
#include "store/ZRRoster.h"

#include <optional>
#include <string>

struct MeCard {
    platform::Ref<ZRPerson> person;
    std::string data;
};

/// Both of one moment; absent when the roster has no Me card or no vCard can be made of it.
std::optional<MeCard> presentMeCard(ZRRoster& roster);
