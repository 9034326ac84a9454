// How several processes of one user take turns by a name that they agree on.
#include "store/ZRProcessSharedLock.h"

#include "core/ZRLog.h"
#include "platform/run/Clock.h"

#include <limits>

namespace {

constexpr char className[] = "ZRProcessSharedLock";
constexpr double secondsBetweenTries = 0.001;

} // namespace

ZRProcessSharedLock::ZRProcessSharedLock()
    : ZRProcessSharedLock("org.quillon.Roster.ZRDefaultProcessSharedLock")
{
}

ZRProcessSharedLock::ZRProcessSharedLock(std::string_view identifier) : mIdentifier(identifier) { }

platform::Ref<ZRProcessSharedLock> ZRProcessSharedLock::initWithIdentifier(std::string_view identifier)
{
    return platform::makeRef<ZRProcessSharedLock>(identifier);
}

ZRProcessSharedLock::~ZRProcessSharedLock()
{
    if (mLockCount != 0)
        platform::log(fmt::format("An instance of {} was deallocated while it was still locked. In the "
                                  "future, this will become a hard error.",
            className));
}

bool ZRProcessSharedLock::tryLock()
{
    if (mPort) {
        ++mLockCount;
        return true;
    }
    if (auto claim = platform::NamedClaim::take(mIdentifier))
        mPort = *std::move(claim);
    mLockCount = 1;
    ZRDLog("[PSL] Try-locked <{} {}> {}", className, fmt::ptr(this), mPort ? mIdentifier : "");
    return mPort.has_value();
}

void ZRProcessSharedLock::lock()
{
    ZRDLog("[PSL] Attempting to lock <{} {}>", className, fmt::ptr(this));
    lockBeforeDate(std::numeric_limits<double>::infinity());
    ZRDLog("[PSL] Locked <{} {}> (count {})", className, fmt::ptr(this), mLockCount);
}

bool ZRProcessSharedLock::lockBeforeDate(double limit)
{
    const auto& clock = platform::Clock::current();
    while (clock.now() < limit) {
        if (tryLock())
            return true;
        clock.sleepUntil(clock.monotonic() + secondsBetweenTries);
    }
    return false;
}

void ZRProcessSharedLock::unlock()
{
    if (mLockCount > 0 && --mLockCount == 0)
        mPort.reset();
    ZRDLog("[PSL] Unlocked <{} {}> (count {})", className, fmt::ptr(this), mLockCount);
}
