// What makes all that a process saves one step of the history.
#pragma once

#include "core/ZRExport.h"
#include "platform/value/Object.h"

#include <memory>
#include <string>

class ZRRoster;

/// While it lives, whatever this process saves to the roster's store, by any roster on it and in however many
/// saves, becomes one step of the store's history, which ZRHistory takes back as a whole.
///
/// It is no transaction: each save lasts by itself, and a process that is killed leaves the step with what it
/// had saved. A save that changes no record adds nothing, and without any there is no step. While a step
/// lives no other process undoes it.
///
///     const ZRHistoryStep step(*roster, "merge Ana Lima");
///     …
///     roster->save();
///
/// Ownership: shares ownership of the roster.
/// Threads:   one makes and ends it; saves may come from any.
/// Errors:    none. A step within another of the same store is part of that one. What cannot be written down
///            fails the save that it belongs to.
class ZR_EXPORT ZRHistoryStep {
public:
    ZRHistoryStep(ZRRoster& roster, std::string title);
    ~ZRHistoryStep();
    ZRHistoryStep(const ZRHistoryStep&) = delete;
    ZRHistoryStep& operator=(const ZRHistoryStep&) = delete;

private:
    struct State;
    std::unique_ptr<State> _state;
};
