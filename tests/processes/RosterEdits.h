// Who edits a roster in the tests of many processes: one random edit a save, each of them logged.
#pragma once

#include "core/ZRGroup.h"
#include "processes/SaveLog.h"
#include "store/RosterWorld.h"

#include <functional>
#include <random>

namespace test {

/// The record as plain texts; empty when it was deleted.
PlainRecord plainRecord(ZRRecord& record);
/// All cards and groups that a fetch finds.
Lines fetchedLines(ZRRoster& roster);

/// Edits the shared roster at random, and holds on to every record that it ever saw.
///
/// A card that only this editor changes keeps the number of its last save, so that the roster itself tells
/// which was the last save of an editor that was killed.
class RosterEditor {
public:
    RosterEditor(Ref<ZRRoster> roster, const std::string& logPath, unsigned seed);

    /// Makes the cards and groups that all begin with.
    void prepare(int cards, int groups);
    /// One random edit and its save, logged. Throws when the save is refused.
    void editAndSave();
    /// The records held all along, as they are in memory; nothing for those that are gone.
    Lines heldLines();

private:
    enum class Kind { card, group };
    using Edits = std::vector<Json>;

    void save(const std::function<void(Edits&)>& change);
    void lookAround();
    void hold(const Ref<ZRRecord>& record);
    Ref<ZRRecord> pick(Kind kind);
    std::size_t below(std::size_t count) { return _random() % count; }
    std::string word() { return "w" + std::to_string(_random() % 100000); }

    Ref<ZRRecord> add(Kind kind, Edits& edits);
    void set(ZRRecord& record, std::string_view property, const std::string& value, Edits& edits);
    void noteNumber(Edits& edits);
    void editRandomly(Edits& edits);
    void editText(Edits& edits);
    void editEntries(Edits& edits);
    void editMembers(Edits& edits);
    void remove(Edits& edits);

    const Ref<ZRRoster> _roster;
    SaveLog _log;
    std::mt19937 _random;
    std::map<std::string, Ref<ZRRecord>> _held;
    /// What may be edited: not the numbers of other editors.
    std::vector<Ref<ZRRecord>> _cards, _groups;
    Ref<ZRRecord> _number;
    int _saves = 0;
};

/// Begins the name of a card that keeps the number of an editor's last save.
inline constexpr char kNumberCard[] = "Number of ";

} // namespace test
