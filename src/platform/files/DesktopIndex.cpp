// Which desktop index is in use.
#include "platform/files/DesktopIndex.h"

#include "platform/run/Mutex.h"

#include <utility>

namespace platform {

namespace {

struct Current {
    Mutex mutex{LockRank::leaf};
    std::shared_ptr<DesktopIndex> index ZR_GUARDED_BY(mutex);
};

Current& theCurrent()
{
    static auto* const one = new Current;
    return *one;
}

} // namespace

std::shared_ptr<DesktopIndex> DesktopIndex::current()
{
    const Lock guard(theCurrent().mutex);
    return theCurrent().index;
}

std::shared_ptr<DesktopIndex> DesktopIndex::install(std::shared_ptr<DesktopIndex> index)
{
    const Lock guard(theCurrent().mutex);
    return std::exchange(theCurrent().index, std::move(index));
}

} // namespace platform
