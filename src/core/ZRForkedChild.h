// Whether this process may use the roster at all.
#pragma once

#include "core/ZRExport.h"

/// True in a child that was forked from a process which had taken a lock of ZRGlobalLock.h: there the threads
/// of the parent are gone and its locks may be held for ever. It takes no lock and makes none.
ZR_EXPORT bool zrIsForkedChild() noexcept;
