// How a person goes out as a vCard and comes back.
#pragma once

#include "Losses.h"
#include "PlainCard.h"

#include <string>
#include <string_view>
#include <vector>

namespace test {

/// The person as that road has it written.
std::string written(const ZRPerson& person, const Road& road);

/// The people of all cards in the data, read as they stand.
std::vector<platform::Ref<ZRPerson>> readAll(std::string_view data, const platform::Ref<ZRRoster>& roster);

/// What is read of a card at the end of the road; empty when nothing is. `roster` keeps nobody.
PlainCard comesBack(const std::string& data, const Road& road, const platform::Ref<ZRRoster>& roster);

} // namespace test
