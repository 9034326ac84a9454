// The merger of programs that write an import as a command of their own.
#pragma once

#include "merge/ZRNewMerger.h"

#include <string_view>

/// An older form of ZRNewMerger, which finds cards by their place in the sorted list and leaves writing to a
/// command with a name.
///
/// Ownership, Threads, Errors: as ZRNewMerger; the controller of the user interface is kept for its owner.
class ZR_EXPORT ZRMerger final : public ZRNewMerger {
public:
    static platform::Ref<ZRMerger> initWithUIController(
        platform::Ref<platform::Object> uiController, platform::Ref<ZRGroup> group);

    const platform::Ref<platform::Object>& uiController() const { return _uiController; }

    /// By name in the user's order alone: whoever stands where the incoming person would go, and compares
    /// equal to it.
    Duplicates duplicatesForPeople(const ZRRecordList& people) override;
    /// Writes what was gathered, as a step that can be undone under the text of `key` in the user's language.
    /// False when there was nothing to do.
    bool issueCommandWithActionName(std::string_view key);
    bool issueCommand() { return issueCommandWithActionName("IMPORT"); }

private:
    template <class T, class... Arguments>
    friend platform::Ref<T> platform::makeRef(Arguments&&...);
    ZRMerger(platform::Ref<platform::Object> uiController, platform::Ref<ZRGroup> group)
        : ZRNewMerger(std::move(group)), _uiController(std::move(uiController))
    {
    }
    ~ZRMerger() override = default;

    platform::Ref<platform::Object> _uiController;
};
