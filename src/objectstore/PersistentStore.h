// One store of a coordinator: its file and its connection.
#pragma once

#include "objectstore/StoreCoordinator.h"

#include <cstdint>
#include <memory>
#include <string>

namespace objectstore {

struct StoreState;

/// One open store.
///
/// Ownership: owned by its coordinator, until it is removed there.
/// Threads:   path, type and number never change; everything else under the coordinator's lock.
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

    /// The engine's side: connection, statements, rows.
    StoreState& state() const { return *_state; }

private:
    friend class StoreCoordinator;
    friend class StoreOpening;
    PersistentStore(StoreType type, std::string path, std::uint32_t number);

    StoreType _type;
    std::string _path;
    std::uint32_t _number;
    std::string _identifier;
    std::unique_ptr<StoreState> _state;
};

} // namespace objectstore
