// What tests share that kill the tool at moments of chance: how often, over which cards, and when.
#pragma once

#include "tool/ToolWorld.h"

#include <random>
#include <string>

namespace test {

// A kill and the look at what it left take a second or so of work in release, ten times that with sanitizers.
#ifdef SLOW_BUILD
constexpr bool kIsSlow = true;
#else
constexpr bool kIsSlow = false;
#endif

/// How many: what ROSTER_KILLS says, which is 100 for a full run, or else the usual number.
int kills(int usual);

/// Cards of several lines, every so manyth one with a picture of about that size.
std::string manyCards(int count, int picturesEvery, std::size_t pictureSize);

/// Runs it to its end; how long that takes.
double secondsOf(const ToolWorld& world, const std::string& line);

/// Starts it and kills it at some moment before `seconds` have passed; answers the moment, for a trace.
std::string killWithin(double seconds, const ToolWorld& world, const std::string& line, std::mt19937& random);

} // namespace test
