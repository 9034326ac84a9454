// Who takes commands back: the target of what they register.
#pragma once

#include "core/ZRExport.h"
#include "platform/value/Object.h"

#include <memory>
#include <string>

class UndoManager;
class ZRCommand;

/// The one target of all steps that commands leave: it undoes and redoes them.
///
/// Each of the two registers the other one, so a command goes back and forth as often as the user likes.
///
/// Ownership: one for the process; it does not keep its manager alive.
/// Threads:   that of the commands.
/// Errors:    none of its own.
class ZR_EXPORT ZRUndoer final : public platform::Object {
public:
    explicit ZRUndoer(std::weak_ptr<UndoManager> undoManager) : _undoManager(std::move(undoManager)) { }

    /// Registers, where the command's roster or else the undoer has a manager, that `command` can be undone.
    void registerUndo(const platform::Ref<ZRCommand>& command, const std::string& name);
    void _performUndoCommand(const platform::Ref<ZRCommand>& command, const std::string& name);
    void _performRedoCommand(const platform::Ref<ZRCommand>& command, const std::string& name);

private:
    ~ZRUndoer() override = default;
    using Operation = void (ZRUndoer::*)(const platform::Ref<ZRCommand>&, const std::string&);
    void registerOperation(
        Operation operation, const platform::Ref<ZRCommand>& command, const std::string& name);

    const std::weak_ptr<UndoManager> _undoManager;
};
