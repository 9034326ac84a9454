// `roster import`: cards from files into the roster, or what would become of them.
#include "Command.h"
#include "ImportOutput.h"

namespace {

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
    ZRvCardController controller(options.plan ? nullptr : openRoster(options));
    controller.setPreparation(options.prepare == "none" ? ZRvCardController::Preparation::none
                                                        : ZRvCardController::Preparation::full);
    if (options.plan) {
        controller.setOutcome(ZRvCardController::Outcome::readOnly);
        PlanPrinter plan(controller, options.json, options.explain);
        controller.importVCardFiles(options.words);
        plan.finish(controller.result());
        return statusOf(controller.result());
    }
    {
        const ProgressBar progress(controller);
        controller.importVCardFiles(options.words);
    }
    complainOfRefusals(controller.result());
    if (options.json)
        printJson(resultJson(controller.result()));
    else if (controller.result().added + controller.result().skipped > 0)
        print(resultText(controller.result()));
    return statusOf(controller.result());
}
