#include "names.h"

namespace report {

OperationWords wordsOf(Operation operation) {
    switch (operation) {
        case Operation::none: return {"none", "no operation that left a trace", ""};
        case Operation::update: return {"update", "update", ""};
        case Operation::versions: return {"versions", "installed versions", " -v"};
        case Operation::directory: return {"directory", "firmware directories", " -dir"};
        case Operation::iscsiVersions:
            return {"iscsi-versions", "iSCSI configuration versions", " -iscsicfgversion"};
        case Operation::disableManagement:
            return {"disable-management", "management firmware off", " -nomfw"};
        case Operation::enableNcsi: return {"enable-ncsi", "NCSI on", " -ncsienable"};
        case Operation::disableNcsi: return {"disable-ncsi", "NCSI off", " -ncsidisable"};
    }
    return {};
}

OutcomeWords wordsOf(Outcome outcome) {
    switch (outcome) {
        case Outcome::clean: return {"clean", "all well"};
        case Outcome::failed: return {"failed", "FAILED"};
        case Outcome::adapterDown: return {"adapter-down", "AN ADAPTER IS DOWN"};
        case Outcome::noAdapters: return {"no-adapters", "NO ADAPTER FOUND"};
        case Outcome::rebootFirst: return {"reboot-first", "REBOOT FIRST"};
        case Outcome::usageError: return {"usage-error", "USAGE ERROR"};
        case Outcome::cutOff: return {"cut-off", "KILLED OR STILL RUNNING: the log has no end"};
        case Outcome::headingAlone: return {"heading-alone", "NOTHING WAS DONE, OR IT WAS CUT OFF"};
    }
    return {};
}

std::string componentOf(const Flash& flash) {
    return flash.component == nullptr ? "" : flash.component->name;
}

const char* nameOf(FlashOutcome outcome) {
    switch (outcome) {
        case FlashOutcome::cutOff: return "cut-off";
        case FlashOutcome::updated: return "updated";
        case FlashOutcome::rebootNeeded: return "updated-reboot-needed";
        case FlashOutcome::notNeeded: return "not-needed";
        case FlashOutcome::refused: return "not-accepted";
        case FlashOutcome::failed: return "failed";
        case FlashOutcome::imageMissing: return "image-missing";
        case FlashOutcome::heldBack: return "held-back";
    }
    return nullptr;
}

const char* nameOf(SwitchOutcome outcome) {
    switch (outcome) {
        case SwitchOutcome::cutOff: return "cut-off";
        case SwitchOutcome::done: return "done";
        case SwitchOutcome::rebootNeeded: return "done-reboot-needed";
        case SwitchOutcome::failed: return "failed";
    }
    return nullptr;
}

const char* nameOf(CrcOutcome outcome) {
    switch (outcome) {
        case CrcOutcome::none: return nullptr;
        case CrcOutcome::passed: return "passed";
        case CrcOutcome::failed: return "failed";
        case CrcOutcome::down: return "down";
    }
    return nullptr;
}

const char* nameOf(YbOutcome outcome) {
    switch (outcome) {
        case YbOutcome::none: return nullptr;
        case YbOutcome::right: return "right";
        case YbOutcome::repaired: return "repaired";
        case YbOutcome::failed: return "failed";
    }
    return nullptr;
}

const char* nameOf(StepCode code) {
    switch (code) {
        case StepCode::checkNothingRuns: return "check-nothing-runs";
        case StepCode::stayUp: return "stay-up";
        case StepCode::support: return "support";
        case StepCode::mend: return "mend";
        case StepCode::loadDriver: return "load-driver";
        case StepCode::reboot: return "reboot";
        case StepCode::run: return "run";
    }
    return nullptr;
}

}  // namespace report
