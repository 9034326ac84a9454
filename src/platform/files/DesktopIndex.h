// What the desktop's search service knows of files.
#pragma once

#include "platform/value/Export.h"
#include "platform/value/Value.h"

#include <memory>
#include <optional>
#include <string>

namespace platform {

/// The service that finds files by what is in them, as far as this system asks it.
///
/// Ownership: the installed one is shared by whoever asks.
/// Threads:   any.
/// Errors:    none; what is not known is absent.
class PLATFORM_EXPORT DesktopIndex {
public:
    virtual ~DesktopIndex() = default;

    /// When somebody last used the file.
    virtual std::optional<Date> lastUsed(const std::string& path) = 0;

    /// The one in use; null, as at first, where the desktop has none.
    static std::shared_ptr<DesktopIndex> current();
    /// Replaces it and answers the former.
    static std::shared_ptr<DesktopIndex> install(std::shared_ptr<DesktopIndex> index);
};

} // namespace platform
