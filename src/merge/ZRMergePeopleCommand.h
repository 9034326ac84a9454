// Several cards become one: the user's "merge selected cards".
#pragma once

#include "commands/RecordKeeping.h"
#include "commands/ZRCommand.h"
#include "core/ZRGroup.h"
#include "core/ZRPerson.h"

#include <optional>
#include <vector>

/// Makes a new card of several, which go.
///
/// The first card wins (see ZRPersonAdditions): what the others say stands beside its values or in the note.
/// The new card has the first picture that is found, is in all groups of the cards, in each with a choice
/// of entries that was made there, and is Me if one of them was.
///
/// Ownership, Threads: as ZRCommand.
/// Errors:    as ZRCommand; there is nothing to do for fewer than two people of the roster.
class ZR_EXPORT ZRMergePeopleCommand final : public ZRCommand {
public:
    /// `originalPeople` in the order in which they win; who is no person of the roster is left out.
    static platform::Ref<ZRMergePeopleCommand> initWithGroup(platform::Ref<ZRGroup> selectedGroup,
        const ZRRecordList& originalPeople, platform::Ref<ZRRoster> roster = nullptr);

    bool doIt() override;
    void undoIt() override;
    void redoIt() override;

    /// The new card; null before `doIt`.
    const platform::Ref<ZRPerson>& resultingPerson() const { return _resultingPerson; }
    const ZRRecordList& originalPeople() const { return _originalPeople; }

private:
    template <class T, class... Arguments>
    friend platform::Ref<T> platform::makeRef(Arguments&&...);
    ZRMergePeopleCommand(platform::Ref<ZRGroup> selectedGroup, const ZRRecordList& originalPeople,
        platform::Ref<ZRRoster> roster);
    ~ZRMergePeopleCommand() override = default;

    bool isToBeMerged(const ZRRecord& record) const;
    void mergeValues();
    void mergeImage();
    void joinGroups();
    ZRRecordList originalParentGroups() const;
    void tellCacheOfResult();

    const platform::Ref<ZRGroup> _selectedGroup;
    platform::Ref<ZRPerson> _resultingPerson;
    /// What the result was when it was taken back; absent while it is there.
    std::optional<KeptRecord> _resultingPersonProperties;
    platform::Ref<ZRPerson> _originalMe;
    ZRRecordList _originalPeople;
    /// What the originals were, their groups included, while they are gone.
    std::vector<KeptRecord> _originalPeopleProperties;
};
