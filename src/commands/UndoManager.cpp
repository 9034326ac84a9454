// How steps are gathered, run, and moved between what can be undone and what can be redone.
#include "commands/UndoManager.h"

#include "core/ZRFailure.h"

#include <algorithm>
#include <iterator>
#include <utility>

using platform::Object;
using platform::Ref;

UndoManager::UndoManager() = default;
UndoManager::~UndoManager() = default;

// ---- registering

void UndoManager::registerUndoWithTarget(Ref<Object> target, Operation operation)
{
    zrRequire(bool(target), "target != nil");
    if (!isUndoRegistrationEnabled())
        return;
    if (_phase == Phase::idle)
        _redoSteps.clear();
    _open.actions.push_back({std::move(target), std::move(operation)});
    if (_openGroups == 0)
        keep(std::exchange(_open, {}));
}

void UndoManager::disableUndoRegistration()
{
    const platform::Lock guard(_disabledMutex);
    ++_disabled[std::this_thread::get_id()];
}

void UndoManager::enableUndoRegistration()
{
    const platform::Lock guard(_disabledMutex);
    const auto at = _disabled.find(std::this_thread::get_id());
    zrRequire(at != _disabled.end(), "undo registration is off");
    if (--at->second == 0)
        _disabled.erase(at);
}

bool UndoManager::isUndoRegistrationEnabled() const
{
    const platform::Lock guard(_disabledMutex);
    return !_disabled.contains(std::this_thread::get_id());
}

// ---- grouping

void UndoManager::beginUndoGrouping() { ++_openGroups; }

void UndoManager::endUndoGrouping()
{
    zrRequire(_openGroups != 0, "an undo group is open");
    --_openGroups;
    if (_openGroups != 0)
        return;
    Step step = std::exchange(_open, {});
    if (!step.actions.empty())
        keep(std::move(step));
}

void UndoManager::keep(Step step)
{
    stepsBeingMade().push_back(std::move(step));
    dropOldest();
}

void UndoManager::dropOldest()
{
    for (Steps* const steps : {&_undoSteps, &_redoSteps})
        if (_levelsOfUndo != 0 && steps->size() > _levelsOfUndo)
            steps->erase(steps->begin(), std::prev(steps->end(), static_cast<std::ptrdiff_t>(_levelsOfUndo)));
}

// ---- names

void UndoManager::setActionName(std::string_view name)
{
    if (_openGroups != 0)
        _open.name = name;
    else if (Steps& steps = stepsBeingMade(); !steps.empty())
        steps.back().name = name;
}

std::string UndoManager::undoActionName() const
{
    if (hasOpenOperations())
        return _open.name;
    return _undoSteps.empty() ? std::string() : _undoSteps.back().name;
}

std::string UndoManager::redoActionName() const
{
    return _redoSteps.empty() ? std::string() : _redoSteps.back().name;
}

// ---- going back and forth

void UndoManager::undo()
{
    zrRequire(_phase == Phase::idle && _openGroups <= 1, "no step and no nested group is under way");
    if (_openGroups != 0)
        endUndoGrouping();
    run(_undoSteps, Phase::undoing);
}

void UndoManager::redo()
{
    zrRequire(_phase == Phase::idle && _openGroups == 0, "no step and no group is under way");
    run(_redoSteps, Phase::redoing);
}

// What the step registers is one step again, under its name unless the step gives another.
void UndoManager::run(Steps& from, Phase phase)
{
    if (from.empty())
        return;
    const Step step = std::move(from.back());
    from.pop_back();
    struct Running {
        Running(UndoManager& of, Phase phase) : manager(of)
        {
            manager._phase = phase;
            manager.beginUndoGrouping();
        }
        ~Running()
        {
            manager._openGroups = 1;
            manager.endUndoGrouping();
            manager._phase = Phase::idle;
        }
        UndoManager& manager;
    };
    const Running running(*this, phase);
    _open.name = step.name;
    for (auto action = step.actions.rbegin(); action != step.actions.rend(); ++action)
        action->operation(*action->target);
}

// ---- forgetting

void UndoManager::removeAllActions()
{
    _undoSteps.clear();
    _redoSteps.clear();
    _open.actions.clear();
}

void UndoManager::removeAllActionsWithTarget(const Object& target)
{
    const auto forget = [&](Step& step) {
        std::erase_if(step.actions, [&](const auto& action) { return action.target.get() == &target; });
    };
    for (Steps* const steps : {&_undoSteps, &_redoSteps}) {
        std::ranges::for_each(*steps, forget);
        std::erase_if(*steps, [](const auto& step) { return step.actions.empty(); });
    }
    forget(_open);
}

void UndoManager::setLevelsOfUndo(std::size_t levels)
{
    _levelsOfUndo = levels;
    dropOldest();
}
