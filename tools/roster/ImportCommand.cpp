// `roster import`: cards from files into the roster, or what would become of them.
#include "Command.h"
#include "ImportOutput.h"
#include "Lookup.h"

#include "core/ZRConstants.h"
#include "core/ZRGroup.h"

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
        if (!_isNew || result.added > 0)
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
    if (result.added + result.refused + result.skipped == 0) {
        complain("there is no card in the input");
        return exitStatus::refused;
    }
    return result.refused == 0 ? exitStatus::done : exitStatus::refused;
}

} // namespace

int runImport(const Options& options)
{
    if (options.explain && !options.plan)
        throw Failure(exitStatus::usage, "--explain goes with --plan");
    applyPreferences(options);
    const auto roster = options.plan ? nullptr : openRosterToChange(options);
    ZRvCardController controller(roster);
    controller.setPreparation(options.prepare == "none" ? ZRvCardController::Preparation::none
                                                        : ZRvCardController::Preparation::full);
    if (options.plan) {
        controller.setOutcome(ZRvCardController::Outcome::readOnly);
        PlanPrinter plan(controller, options.json, options.explain);
        controller.importVCardFiles(options.words);
        plan.finish(controller.result());
        return statusOf(controller.result());
    }
    TargetGroup target(*roster, options.group);
    {
        const ProgressBar progress(controller);
        controller.importVCardFiles(options.words, target.group());
    }
    target.finish(controller.result());
    complainOfRefusals(controller.result());
    if (options.json)
        printJson(resultJson(controller.result()));
    else if (controller.result().added + controller.result().skipped > 0)
        print(resultText(controller.result()));
    return statusOf(controller.result());
}
