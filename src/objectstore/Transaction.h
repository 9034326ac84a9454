// The only places that say BEGIN.
#pragma once

#include "objectstore/StoreState.h"
#include "platform/value/Error.h"

#include <cstdint>
#include <new>
#include <string_view>

namespace objectstore {

/// Throws StoreFailure when the file at the store's path is not the one that was opened.
void refuseReplaced(const StoreState& store);

/// One consistent view of a store, for a fetch with what it brings along. Within another transaction it is a
/// part of that. Refused when the file at the store's path is not the one that was opened.
///
/// Ownership: borrows the store, whose coordinator the caller has locked.
/// Threads:   one.
/// Errors:    the constructor throws sqlite::Failure or StoreFailure.
class ReadTransaction {
public:
    explicit ReadTransaction(StoreState& store);
    ~ReadTransaction();
    ReadTransaction(const ReadTransaction&) = delete;
    ReadTransaction& operator=(const ReadTransaction&) = delete;

private:
    StoreState& _store;
};

/// The right to write, held from the first statement on, so that what is read in it stays true until the
/// commit. Refused when the file at the store's path is not the one that was opened.
///
/// Ownership: borrows the store, whose coordinator the caller has locked.
/// Threads:   one.
/// Errors:    constructor and `commit` throw sqlite::Failure or StoreFailure; without `commit`, or when it
///            throws, everything is as before.
class WriteTransaction {
public:
    explicit WriteTransaction(StoreState& store);
    ~WriteTransaction();
    WriteTransaction(const WriteTransaction&) = delete;
    WriteTransaction& operator=(const WriteTransaction&) = delete;

    void commit();

private:
    void rollBack() noexcept;

    StoreState& _store;
    bool _isOpen = true;
};

/// The Error that stands for what SQLite refused.
platform::Error errorOf(const sqlite::Failure& failure, std::string_view path);

/// Runs `body` and answers what it answers, or the Error that stands for what it threw.
template <class Body>
auto answering(std::string_view path, Body body) -> platform::Result<decltype(body())>;

} // namespace objectstore

#include "objectstore/StoreErrors.h"

namespace objectstore {

template <class Body>
auto answering(std::string_view path, Body body) -> platform::Result<decltype(body())>
{
    try {
        if constexpr (std::is_void_v<decltype(body())>) {
            body();
            return {};
        } else {
            return body();
        }
    } catch (const sqlite::Failure& failure) {
        return errorOf(failure, path);
    } catch (const StoreFailure& failure) {
        return failure.error();
    } catch (const ObjectOfReplacedStore& failure) {
        return failure.error();
    } catch (const std::bad_alloc&) {
        return storeError(StoreFault::noMemory, std::string(path) + ": no memory");
    }
}

} // namespace objectstore
