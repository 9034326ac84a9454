// Calls an `nts_` operation without the lock, on purpose: thread_safety.py sees that clang refuses it.
#include "store/ZRRoster.h"

bool unlockedCall(ZRRoster& roster);
bool unlockedCall(ZRRoster& roster) { return roster.nts_hasUnsavedChanges(); }
