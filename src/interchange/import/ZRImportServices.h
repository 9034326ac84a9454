// What imports of cards call and the rooms built so far do not have.
#pragma once

#include "core/ZRRecord.h"

#include <functional>

/// Services that later rooms register. An empty function is an absent service.
///
/// Ownership: one instance a process, never destroyed.
/// Threads:   filled while the library loads, read-only afterwards.
/// Errors:    none may raise.
struct ZRImportServices {
    static ZRImportServices& registered();

    /// The roster of the source that takes new cards. Absent: the shared roster is the only source.
    std::function<platform::Ref<ZRRoster>()> defaultTarget;
};
