// Copies of databases that go with the process.
#include "store/ZRHindsightTempFileHelper.h"

#include "objectstore/StoreCoordinator.h"
#include "platform/files/Directories.h"
#include "platform/files/Files.h"
#include "platform/run/Mutex.h"
#include "platform/run/NeverDestroyed.h"
#include "platform/run/ProcessMark.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <vector>

namespace fs = std::filesystem;
using platform::Result;

namespace {

/// The directories of this process's copies.
struct Copies {
    const platform::ProcessMark mark;
    platform::Mutex mutex;
    std::vector<std::string> directories ZR_GUARDED_BY(mutex);

    void add(std::string directory)
    {
        const platform::Lock guard(mutex);
        directories.push_back(std::move(directory));
    }
    void removeAll()
    {
        if (mark.isForeign())
            return;
        const platform::Lock guard(mutex);
        std::error_code ignored;
        for (const auto& directory : directories)
            fs::remove_all(directory, ignored);
    }
};

Copies& copies()
{
    static const platform::NeverDestroyed<Copies> only;
    static const int removes = std::atexit([] { only->removeAll(); });
    static_cast<void>(removes);
    return *only;
}

} // namespace

Result<std::string> ZRHindsightTempFileHelper::temporaryDatabaseUrlByCopyingDatabaseAtPath(
    const std::string& path)
{
    std::string directory = platform::Directories::current()->temporary() + "/roster-hindsight-XXXXXX";
    if (!mkdtemp(directory.data()))
        return platform::fileError(directory, "cannot be made", errno);
    const std::string copy = directory + "/" + fs::path(path).filename().string();
    if (const auto copied = objectstore::StoreCoordinator::copyDatabase(path, copy); !copied) {
        std::error_code ignored;
        fs::remove_all(directory, ignored);
        return copied.error();
    }
    copies().add(std::move(directory));
    return copy;
}
