// Where a program spends its time with the roster: who held the global lock, how often and for how long.
#pragma once

#include <string>

/// A profile of the global lock's outermost holders, kept while `__ZREnableSampling` is on.
///
/// It counts and adds up; it samples no stacks. At the end of the program it becomes one file,
/// "Roster/NAME-PID.profile" in the cache directory: a heading, then a line for each place in the source that
/// locked, those that held it longest first.
///
/// Ownership: one a process.
/// Threads:   any; `lockWasTaken` and `lockIsGivenBack` come from the holder.
/// Errors:    a file that cannot be written is logged.
namespace ZRProfile {

/// The monotonic time, or 0 while nothing is profiled: before a lock is asked for.
double now();
void lockWasTaken(const char* file, long line, double requestedAt);
void lockIsGivenBack();

/// What the file says.
std::string text();
/// Writes the file, if something was profiled.
void write();

} // namespace ZRProfile
