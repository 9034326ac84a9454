// What can be undone and redone: steps on two stacks, each a group of operations under a name.
#pragma once

#include "core/ZRExport.h"
#include "objectstore/StoreContext.h"
#include "platform/run/Mutex.h"
#include "platform/value/Object.h"

#include <atomic>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

/// The steps that a user may take back and forth.
///
/// Whoever changes something registers what takes the change back. While a step is undone, what is registered
/// becomes the step that redoes it, and the other way round; otherwise a registration makes a new step, and
/// what could be redone is forgotten. It records nothing by itself, and knows no records.
///
/// Ownership: keeps targets and operations alive until their step is dropped. Contexts borrow the manager.
/// Threads:   the thread of the commands, except that the four operations of the engine may be called by any:
///            registration is off for the thread that turned it off.
/// Errors:    grouping that does not fit raises ZRInvalidArgument with nothing changed. What an operation
///            raises goes through; the rest of its step is dropped then.
class ZR_EXPORT UndoManager : public objectstore::UndoManager,
                              public std::enable_shared_from_this<UndoManager> {
public:
    using Operation = std::function<void(platform::Object& target)>;

    UndoManager();
    ~UndoManager() override;
    UndoManager(const UndoManager&) = delete;
    UndoManager& operator=(const UndoManager&) = delete;

    // ---- registering

    /// Adds an operation to the open group; without one, it is a step by itself. Nothing while registration
    /// is off. An absent target raises.
    virtual void registerUndoWithTarget(platform::Ref<platform::Object> target, Operation operation);
    /// The same, for who likes to write `prepareWithInvocationTarget(target)(operation)`.
    auto prepareWithInvocationTarget(platform::Ref<platform::Object> target)
    {
        return [this, target = std::move(target)](
                   Operation operation) { registerUndoWithTarget(target, std::move(operation)); };
    }
    /// Counted for each thread.
    void disableUndoRegistration() override;
    /// Raises on a thread that did not turn it off.
    void enableUndoRegistration() override;
    bool isUndoRegistrationEnabled() const;

    // ---- grouping

    /// What is registered until the end of the group is one step. Groups inside it are parts of the step.
    void beginUndoGrouping();
    /// Raises without an open group. An empty group leaves no step.
    void endUndoGrouping();
    std::size_t groupingLevel() const { return _openGroups; }

    // ---- names

    /// Names the open step, or else the one that was made last.
    void setActionName(std::string_view name);
    /// Of the next step to be undone; empty without one.
    std::string undoActionName() const;
    std::string redoActionName() const;

    // ---- going back and forth

    /// Takes back the last step; ends the open group first. Raises in a group inside another, and while a
    /// step is going on. Nothing without a step.
    void undo();
    void redo();
    bool canUndo() const { return !_undoSteps.empty() || hasOpenOperations(); }
    bool canRedo() const { return !_redoSteps.empty(); }
    bool isUndoing() const override { return _phase == Phase::undoing; }
    bool isRedoing() const override { return _phase == Phase::redoing; }

    // ---- forgetting

    void removeAllActions();
    /// Forgets what would be done to `target`, in all steps.
    void removeAllActionsWithTarget(const platform::Object& target);
    /// How many steps are kept at the most; 0, as at first, is all.
    std::size_t levelsOfUndo() const { return _levelsOfUndo; }
    void setLevelsOfUndo(std::size_t levels);

    // ---- the making of a new card
    // Callers need not know whether they hold a manager that has groups for it. This one has none.

    virtual void beginCreationUndoGrouping() { }
    virtual void endCreationUndoGrouping() { }
    virtual void setNonCreationActionName(std::string_view name) { setActionName(name); }

private:
    enum class Phase { idle, undoing, redoing };
    struct Action {
        platform::Ref<platform::Object> target;
        Operation operation;
    };
    struct Step {
        std::string name;
        std::vector<Action> actions;
    };
    using Steps = std::vector<Step>;

    bool hasOpenOperations() const { return _phase == Phase::idle && !_open.actions.empty(); }
    Steps& stepsBeingMade() { return _phase == Phase::undoing ? _redoSteps : _undoSteps; }
    void keep(Step step);
    void dropOldest();
    void run(Steps& from, Phase phase);

    std::atomic<Phase> _phase = Phase::idle;
    Steps _undoSteps;
    Steps _redoSteps;
    /// What was registered since the outermost open group began.
    Step _open;
    std::size_t _openGroups = 0;
    std::size_t _levelsOfUndo = 0;

    mutable platform::Mutex _disabledMutex;
    std::map<std::thread::id, std::size_t> _disabled ZR_GUARDED_BY(_disabledMutex);
};
