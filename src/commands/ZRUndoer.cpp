// How a command goes back and forth: each way registers the other one.
#include "commands/ZRUndoer.h"

#include "commands/ZRCommand.h"

using platform::Ref;

void ZRUndoer::registerUndo(const Ref<ZRCommand>& command, const std::string& name)
{
    registerOperation(&ZRUndoer::_performUndoCommand, command, name);
}

void ZRUndoer::_performUndoCommand(const Ref<ZRCommand>& command, const std::string& name)
{
    command->undoIt();
    registerOperation(&ZRUndoer::_performRedoCommand, command, name);
}

void ZRUndoer::_performRedoCommand(const Ref<ZRCommand>& command, const std::string& name)
{
    command->redoIt();
    registerOperation(&ZRUndoer::_performUndoCommand, command, name);
}

void ZRUndoer::registerOperation(Operation operation, const Ref<ZRCommand>& command, const std::string& name)
{
    const auto own = _undoManager.lock();
    auto* const manager = command->_undoManager() ? command->_undoManager() : own.get();
    if (!manager)
        return;
    manager->prepareWithInvocationTarget(Ref<Object>(this))([operation, command, name](Object& target) {
        (static_cast<ZRUndoer&>(target).*operation)(command, name);
    });
    manager->setActionName(name);
}
