// Which other processes there are, and which of them have a file open.
#pragma once

#include "store/ZRRosterStanding.h"

#include <string>

/// That process with its name; absent name when it has ended.
ZRRosterStanding::Process zrProcessNumbered(std::int64_t process);

/// The processes of this user, other than this one, that have the file at `path` open, by whatever name.
ZRRosterStanding::Holders zrHoldersOfFile(const std::string& path);
