// How this process makes sure that the user's helper program runs.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace platform {

/// The helper program, and the port that it holds while it runs.
inline constexpr char kHelperProgram[] = "zrd";
inline constexpr char kHelperPort[] = "org.quillon.Roster.zrd";
/// The one message that it knows, without data or reply: look after your work.
inline constexpr std::uint32_t kLookAfterYourWork = 1;

/// One of our own programs: beside the library that runs, in the `bin` next to it (built trees), or in the
/// directory of helper programs of an installation, wherever that was moved as a whole; where the environment
/// names a directory in ROSTER_HELPER_DIR, there and nowhere else. Absent where it is not.
std::optional<std::string> ownProgram(const std::string& name);

/// Tells the running helper to look after its work. Answers false when none runs.
bool tellHelper();

/// Tells the helper, and starts it when none runs. Both happen on a thread that the caller does not wait for;
/// the end of the process waits for it, a second at most. What fails is logged.
void wakeHelper();

} // namespace platform
