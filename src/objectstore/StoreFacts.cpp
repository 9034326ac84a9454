// What a store says of itself: how far it is, and in which form.
#include "objectstore/StoreFacts.h"

#include "objectstore/PersistentStore.h"
#include "objectstore/StoreOpening.h"
#include "objectstore/Transaction.h"

#include <sqlite3.h>

namespace objectstore {

platform::Result<StoreFacts> factsOf(StoreCoordinator& coordinator, PersistentStore& store)
{
    const platform::Lock lock(coordinator.mutex());
    return answering(store.path(), [&]() -> StoreFacts {
        if (!store.isOpen())
            throw StoreFailure(storeError(StoreFault::noStore, "the store is not open"));
        const ReadTransaction transaction(store.state());
        return {store.state().commitNumber, readMeta(store.state(), kMetaModelHash), store.identifier()};
    });
}

std::string sqliteVersion() { return sqlite3_libversion(); }

} // namespace objectstore
