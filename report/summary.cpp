#include "summary.h"

#include "update/exit_status.h"
#include "work.h"

namespace report {

static Outcome outcomeOf(const Run& run, bool failed) {
    if (run.headingAlone) {
        return Outcome::headingAlone;
    }
    if (run.cutOff) {
        return Outcome::cutOff;
    }
    if (run.usageError) {
        return Outcome::usageError;
    }
    if (run.rebootFirst) {
        return Outcome::rebootFirst;
    }
    switch (static_cast<fwup::ExitStatus>(*run.exitStatus)) {
        case fwup::exitNoDevices: return Outcome::noAdapters;
        case fwup::exitAdapterDown: return Outcome::adapterDown;
        case fwup::exitErrors: return Outcome::failed;
        case fwup::exitClean: return failed ? Outcome::failed : Outcome::clean;
    }
    return Outcome::failed;
}

static bool needsReboot(const Run& run) {
    bool needed = run.rebootFirst;
    for (const Flash& flash : run.flashes) {
        needed = needed || flash.outcome == FlashOutcome::rebootNeeded;
    }
    for (const Switch& one : run.switches) {
        needed = needed || one.outcome == SwitchOutcome::rebootNeeded;
    }
    return needed;
}

Summary summarize(const Run& run, History* history) {
    Summary summary;
    addAdapters(run, summary);
    const Tasks tasks = addProblems(run, summary);
    summary.rebootNeeded = needsReboot(run);
    summary.outcome = outcomeOf(run, tasks.failed);
    addNext(run, tasks, summary);
    if (history != nullptr) {
        heedHistory(run, summary, *history);
    }
    return summary;
}

}  // namespace report
