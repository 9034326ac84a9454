// What is undone and redone, in which order, under which name, and what is forgotten.
#include "commands/ZRUndoManager.h"

#include "core/ZRFailure.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>

namespace test {

namespace {

using platform::Ref;

/// A line of letters. Each that is typed or erased registers the opposite.
class Line final : public platform::Object {
public:
    explicit Line(UndoManager& manager) : _manager(manager) { }
    void type(char letter)
    {
        text += letter;
        _manager.registerUndoWithTarget(
            Ref<Object>(this), [](Object& line) { static_cast<Line&>(line).erase(); });
    }
    void erase()
    {
        const char letter = text.back();
        text.pop_back();
        _manager.prepareWithInvocationTarget(Ref<Object>(this))(
            [letter](Object& line) { static_cast<Line&>(line).type(letter); });
    }
    std::string text;

private:
    ~Line() override = default;
    UndoManager& _manager;
};

/// A script of letters typed, "(" and ")" around a group, "<" undo, ">" redo, "[" and "]" around the creation
/// of a card.
void play(UndoManager& manager, Line& line, std::string_view script)
{
    for (const char sign : script)
        switch (sign) {
        case '(':
            manager.beginUndoGrouping();
            break;
        case ')':
            manager.endUndoGrouping();
            break;
        case '<':
            manager.undo();
            break;
        case '>':
            manager.redo();
            break;
        case '[':
            manager.beginCreationUndoGrouping();
            manager.setActionName("new card");
            break;
        case ']':
            manager.endCreationUndoGrouping();
            break;
        default:
            line.type(sign);
            manager.setNonCreationActionName(std::string("type ") + sign);
        }
}

struct Script {
    const char* what;
    const char* script;
    const char* text;
    /// The names of what can be undone and redone now.
    const char* undo;
    const char* redo;
};

} // namespace

TEST(UndoManagers, DoAsScriptsTell)
{
    const Script scripts[] = {
        {"nothing to undo", "<>", "", "", ""},
        {"one step a letter", "abc<<", "a", "type a", "type b"},
        {"and back", "abc<<>", "ab", "type b", "type c"},
        {"a new step forgets what could be redone", "abc<<x>", "ax", "type x", ""},
        {"to the beginning, and to the end", "ab<<<>>>", "ab", "type b", ""},
        {"a group is one step", "a(bc)<", "a", "type a", "type c"},
        {"redone in its order", "a(bc)<>", "abc", "type c", ""},
        {"a group in a group is part of it", "(a(bc)d)<", "", "", "type d"},
        {"an empty group is no step", "a()(()())<", "", "", "type a"},
        {"undoing ends an open group", "a(bc<", "a", "type a", "type c"},
        {"the edits of a new card are part of its making", "a[bc]d<<", "a", "type a", "new card"},
        {"which is opened once and closed once", "[[ab]]c<", "ab", "new card", "type c"},
    };
    for (const auto& [what, script, text, undo, redo] : scripts) {
        SCOPED_TRACE(what);
        ZRUndoManager manager;
        const auto line = platform::makeRef<Line>(manager);
        play(manager, *line, script);
        EXPECT_EQ(line->text, text);
        EXPECT_EQ(manager.undoActionName(), undo);
        EXPECT_EQ(manager.redoActionName(), redo);
        EXPECT_EQ(manager.canUndo(), *undo != '\0');
        EXPECT_EQ(manager.canRedo(), *redo != '\0');
        EXPECT_FALSE(manager.isUndoing() || manager.isRedoing());
    }
}

TEST(UndoManagers, NameTheCreationAndNotItsEdits)
{
    const auto named = [](UndoManager& manager) {
        const auto line = platform::makeRef<Line>(manager);
        manager.beginCreationUndoGrouping();
        line->type('a');
        manager.setActionName("creation");
        line->type('b');
        manager.setNonCreationActionName("edit");
        manager.endCreationUndoGrouping();
        manager.undo();
        return manager.redoActionName() + " " + line->text;
    };
    ZRUndoManager ofLists;
    UndoManager plain;
    EXPECT_EQ(named(ofLists), "creation ");
    EXPECT_EQ(named(plain), "edit a");
}

TEST(UndoManagers, KeepSoManyLevels)
{
    UndoManager manager;
    const auto line = platform::makeRef<Line>(manager);
    play(manager, *line, "abcd");
    manager.setLevelsOfUndo(2);
    play(manager, *line, "e<<<");
    EXPECT_EQ(line->text, "abc");
}

// Whatever the engine refreshes meanwhile on another thread, the steps of this one are registered.
TEST(UndoManagers, RegisterNothingOnAThreadThatTurnedItOff)
{
    UndoManager manager;
    const auto line = platform::makeRef<Line>(manager);
    manager.disableUndoRegistration();
    manager.disableUndoRegistration();
    line->type('a');
    manager.enableUndoRegistration();
    line->type('b');
    EXPECT_FALSE(manager.canUndo());
    std::thread([&] { line->type('c'); }).join();
    EXPECT_TRUE(manager.canUndo());
    manager.enableUndoRegistration();
    play(manager, *line, "d<<");
    EXPECT_EQ(line->text, "ab");
}

TEST(UndoManagers, ForgetATarget)
{
    UndoManager manager;
    const auto one = platform::makeRef<Line>(manager), other = platform::makeRef<Line>(manager);
    one->type('a');
    manager.beginUndoGrouping();
    one->type('b');
    other->type('x');
    manager.endUndoGrouping();
    manager.removeAllActionsWithTarget(*one);
    manager.undo();
    EXPECT_EQ(one->text + other->text, "ab");
    EXPECT_FALSE(manager.canUndo());
    manager.removeAllActions();
    EXPECT_FALSE(manager.canRedo());
}

TEST(UndoManagers, StayUsableWhenAStepFails)
{
    UndoManager manager;
    const auto line = platform::makeRef<Line>(manager);
    line->type('a');
    manager.beginUndoGrouping();
    manager.registerUndoWithTarget(line, [](auto&) { throw std::runtime_error("no"); });
    line->type('b');
    manager.endUndoGrouping();
    EXPECT_THROW(manager.undo(), std::runtime_error);
    EXPECT_EQ(line->text, "a");
    EXPECT_FALSE(manager.isUndoing());
    manager.redo();
    EXPECT_EQ(line->text, "ab") << "what was undone before the failure can be redone";
    play(manager, *line, "<<");
    EXPECT_EQ(line->text, "");
}

TEST(UndoManagers, RefuseGroupsThatDoNotFit)
{
    UndoManager manager;
    const auto line = platform::makeRef<Line>(manager);
    line->type('a');
    EXPECT_THROW(manager.endUndoGrouping(), ZRInvalidArgument);
    EXPECT_THROW(manager.enableUndoRegistration(), ZRInvalidArgument);
    EXPECT_THROW(manager.registerUndoWithTarget(nullptr, [](auto&) {}), ZRInvalidArgument);
    manager.beginUndoGrouping();
    EXPECT_THROW(manager.redo(), ZRInvalidArgument);
    manager.beginUndoGrouping();
    EXPECT_THROW(manager.undo(), ZRInvalidArgument);
    EXPECT_EQ(line->text, "a");
}

} // namespace test
