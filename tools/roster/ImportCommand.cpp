// `roster import`: cards from files into the roster, or what would become of them.
#include "Command.h"
#include "ImportOutput.h"
#include "Lookup.h"
#include "PlanOutput.h"

#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "interchange/import/ImportPlan.h"
#include "store/ZRStoreFile.h"

#include <map>

namespace {

/// The group that imported people go into, as --group names it. One that is missing is made, and goes again
/// when nobody came.
class TargetGroup {
public:
    TargetGroup(ZRRoster& roster, const std::string& name) : _roster(roster)
    {
        if (name.empty() || (_group = groupIfNamed(roster, name, GroupKind::ordinary)))
            return;
        _group = ZRGroup::initWithRoster(platform::Ref<ZRRoster>(&roster));
        _group->setValue(platform::Value(name), zr::kZRGroupNameProperty);
        save(roster);
        _isNew = true;
    }

    const platform::Ref<ZRGroup>& group() const { return _group; }

    void finish(const ZRvCardImport& result)
    {
        if (!_isNew || result.added + result.updated + result.same > 0)
            return;
        _roster.removeRecord(_group);
        save(_roster);
    }

private:
    ZRRoster& _roster;
    platform::Ref<ZRGroup> _group;
    bool _isNew = false;
};

void complainOfRefusals(const ZRvCardImport& result)
{
    for (const auto& refusal : result.refusals)
        complain(refusalText(refusal));
    if (result.refused > result.refusals.size())
        complain(std::to_string(result.refused - result.refusals.size()) + " more were refused");
}

int statusOf(const ZRvCardImport& result)
{
    if (!result.failure.domain.empty()) {
        complain("not saved: " + result.failure.text);
        return exitStatus::noStore;
    }
    if (result.added + result.updated + result.same + result.kept + result.groups + result.refused
            + result.skipped
        == 0) {
        complain("there is no card in the input");
        return exitStatus::refused;
    }
    return result.refused == 0 ? exitStatus::done : exitStatus::refused;
}

/// A plan compares with the roster that is there; it makes none.
platform::Ref<ZRRoster> rosterFor(const Options& options)
{
    if (!options.plan)
        return openRosterToChange(options);
    applyPreferences(options);
    return zrHasStoreFile(ZRRoster::rosterDirectory()) ? openRoster(options) : nullptr;
}

void prepare(ZRvCardController& controller, const Options& options)
{
    using interchange::DuplicateHandling;
    static const std::map<std::string, DuplicateHandling> handlings{{"update", DuplicateHandling::update},
        {"replace", DuplicateHandling::replace}, {"keep", DuplicateHandling::keep},
        {"both", DuplicateHandling::both}};
    if (options.prepare == "none")
        controller.setPreparation(ZRvCardController::Preparation::none);
    controller.setGroupsAsked({options.groupCards, options.groupsFromCategories});
    if (!options.duplicates.empty())
        controller.setDuplicateHandling(handlings.at(options.duplicates));
}

int planImport(ZRvCardController& controller, const Options& options)
{
    controller.setOutcome(ZRvCardController::Outcome::readOnly);
    PlanPrinter plan(controller, options.json, options.explain);
    controller.importVCardFiles(options.words);
    plan.finish(controller.result());
    return statusOf(controller.result());
}

} // namespace

int runImport(const Options& options)
{
    if (options.explain && !options.plan)
        throw Failure(exitStatus::usage, "--explain goes with --plan");
    const auto roster = rosterFor(options);
    ZRvCardController controller(roster);
    prepare(controller, options);
    if (options.plan)
        return planImport(controller, options);
    TargetGroup target(*roster, options.group);
    {
        const ProgressBar progress(controller);
        controller.importVCardFiles(options.words, target.group());
    }
    const auto& result = controller.result();
    target.finish(result);
    complainOfRefusals(result);
    if (options.json)
        printJson(resultJson(result));
    else if (result.added + result.updated + result.same + result.kept + result.groups + result.skipped > 0)
        print(resultText(result));
    return statusOf(result);
}
