// The table of the files that the build put into the library.
#pragma once

#include <string_view>
#include <vector>

namespace platform {

/// A file under `resources/`, by its path there. Both live as long as the library.
struct EmbeddedResource {
    std::string_view name;
    std::string_view bytes;
};

/// Defined by the build (cmake/Resources.cmake).
const std::vector<EmbeddedResource>& embeddedResources();

} // namespace platform
