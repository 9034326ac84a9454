// The host of a program that has no windows, and which host is in use.
#include "commands/ApplicationHost.h"

#include "core/ZRLastImportGroup.h"
#include "platform/run/Mutex.h"
#include "store/ZRDBCache.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRRoster.h"

#include <utility>

using platform::Ref;

namespace {

struct Current {
    platform::Mutex mutex;
    std::shared_ptr<ApplicationHost> host ZR_GUARDED_BY(mutex) = std::make_shared<ApplicationHost>();
};

Current& current()
{
    static auto* const one = new Current;
    return *one;
}

} // namespace

ApplicationHost::~ApplicationHost() = default;

Ref<ZRManagedObjectContext> ApplicationHost::cardContext()
{
    const auto roster = ZRRoster::sharedRoster();
    return roster ? roster->managedObjectContext() : nullptr;
}

Ref<ZRRoster> ApplicationHost::aggregateRoster() { return ZRRoster::sharedRoster(); }

Ref<ZRDBCache> ApplicationHost::listsOf(ZRRoster& roster) { return roster.dbCache(); }

void ApplicationHost::clearLastImportGroup()
{
    if (const auto roster = aggregateRoster())
        locked(*roster, ZRAccess::write, [&] {
            if (const auto context = cardContext())
                context->zrClearLastImportGroup();
        });
    if (const auto group = ZRLastImportGroup::lastImportGroup())
        group->clear();
}

std::shared_ptr<ApplicationHost> ApplicationHost::shared()
{
    const platform::Lock guard(current().mutex);
    return current().host;
}

std::shared_ptr<ApplicationHost> ApplicationHost::install(std::shared_ptr<ApplicationHost> host)
{
    if (!host)
        host = std::make_shared<ApplicationHost>();
    const platform::Lock guard(current().mutex);
    return std::exchange(current().host, std::move(host));
}
