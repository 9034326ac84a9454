// How errors of the store are made.
#include "objectstore/StoreErrors.h"

namespace objectstore {

platform::Error storeError(StoreFault fault, std::string text)
{
    return {kStoreErrorDomain, static_cast<long>(fault), std::move(text)};
}

StoreFailure::StoreFailure(platform::Error error) : std::runtime_error(error.text), _error(std::move(error))
{
}

ObjectOfReplacedStore::ObjectOfReplacedStore(platform::Error error)
    : InaccessibleObject(error.text), _error(std::move(error))
{
}

} // namespace objectstore
