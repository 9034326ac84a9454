// One store of a coordinator: its file and its connection.
#pragma once

#include "objectstore/StoreCoordinator.h"

#include <cstdint>
#include <memory>
#include <string>

namespace objectstore {

struct StoreState;

/// One store of a coordinator. A removed one stays, closed, so that objects never point at nothing.
///
/// Ownership: owned by its coordinator.
/// Threads:   the number never changes; everything else under the coordinator's lock.
/// Errors:    none of its own.
class PersistentStore {
public:
    PersistentStore(const PersistentStore&) = delete;
    PersistentStore& operator=(const PersistentStore&) = delete;
    ~PersistentStore();

    const std::string& path() const { return _path; }
    StoreType type() const { return _type; }
    bool isInMemory() const { return _type == StoreType::inMemory; }
    /// See StoreId.
    std::uint32_t number() const { return _number; }
    /// Made with the store file and kept by every copy of it.
    const std::string& identifier() const { return _identifier; }

    /// False once it was removed.
    bool isOpen() const { return _state != nullptr; }
    /// The engine's side: connection, statements, rows. Only while it is open.
    StoreState& state() const { return *_state; }

private:
    friend class StoreCoordinator;
    friend class StoreOpening;
    friend struct std::default_delete<PersistentStore>;
    PersistentStore(StoreType type, std::string path, std::uint32_t number);

    StoreType _type;
    std::string _path;
    std::uint32_t _number;
    std::string _identifier;
    std::unique_ptr<StoreState> _state;
};

} // namespace objectstore
