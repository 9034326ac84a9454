// Random commands on a roster, undone and redone in random walks, each place compared with what it was.
#pragma once

#include "commands/UndoManager.h"
#include "core/ZRGroup.h"
#include "store/RosterSnapshot.h"

#include <functional>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace test {

/// Runs commands of several kinds, and walks up and down what can be undone.
///
/// It sets an undo manager on the roster's context. A kind performs one command on whatever the roster holds
/// then, and answers whether there was anything to do.
class CommandDriver {
public:
    using Kind = std::function<bool(CommandDriver&)>;
    using Kinds = std::vector<std::pair<std::string, Kind>>;

    CommandDriver(Ref<ZRRoster> roster, std::uint32_t seed);
    ~CommandDriver();
    CommandDriver(const CommandDriver&) = delete;
    CommandDriver& operator=(const CommandDriver&) = delete;

    /// Performs so many commands, with walks between them; then goes all the way down, and up again. Each
    /// time the roster, and a second one on the same store, must be what they were there; now and then, and
    /// at both ends, also a new process that opens the store. What was wrong first; empty for nothing.
    std::string run(const Kinds& kinds, int commands);

    // ---- for kinds

    const Ref<ZRRoster>& roster() const { return _roster; }
    /// 0 to `bound` - 1.
    std::size_t number(std::size_t bound);
    bool maybe(int percent) { return number(100) < static_cast<std::size_t>(percent); }
    std::string word();
    /// Up to so many of the roster's people or groups; fewer where it has fewer.
    ZRRecordList somePeople(std::size_t atMost);
    ZRRecordList someGroups(std::size_t atMost);
    /// Absent where there is none.
    Ref<ZRPerson> somebody();
    /// A group whose members are stored.
    Ref<ZRGroup> someGroup();
    /// What a card may have, with entries in each multi-value that groups choose from.
    std::vector<std::pair<std::string_view, Value>> someProperties();
    /// A new card, and a picture of it now and then.
    Ref<ZRPerson> newPerson();
    /// Lets groups choose entries of their members.
    void chooseEntries();

private:
    ZRRecordList some(ZRRecordList records, std::size_t atMost);
    std::string step(const std::string& what);
    std::string walk();
    std::string goTo(std::size_t place);
    std::string difference(const std::string& what, bool reopens) const;

    const Ref<ZRRoster> _roster;
    const std::shared_ptr<UndoManager> _manager;
    std::mt19937 _random;
    /// What the roster was before the first command, and after each that can be undone or redone now.
    std::vector<Snapshot> _states;
    std::size_t _place = 0;
    int _checks = 0;
    std::string _log;
};

/// All kinds of this room.
CommandDriver::Kinds allCommandKinds();

/// The custom properties that `someProperties` names.
void declareProperties(const Ref<ZRRoster>& roster);

/// People with everything that a card can have, groups in groups, a smart group, records that came with a
/// subscription, a Me card, choices, pictures: saved.
void populate(CommandDriver& driver);

} // namespace test
