// The undo manager of an address list: the making of a card and its first edits are one step.
#pragma once

#include "commands/UndoManager.h"

/// An undo manager with one open group for the card that is being made.
///
/// The edits of a new card stay under the name of its creation, and are undone with it.
///
/// Ownership, Threads, Errors: as UndoManager.
class ZR_EXPORT ZRUndoManager final : public UndoManager {
public:
    /// The one for who wants to share one, made at the first call.
    static const std::shared_ptr<ZRUndoManager>& sharedInstance();

    /// Opens the group, unless it is open.
    void beginCreationUndoGrouping() override;
    /// Ends it, if it is open.
    void endCreationUndoGrouping() override;
    /// Names the open or the last step, unless that is the creation of a card.
    void setNonCreationActionName(std::string_view name) override;

private:
    bool _inCreationUndoGrouping = false;
};
