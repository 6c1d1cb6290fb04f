#include <algorithm>

#include "names.h"
#include "work.h"

namespace report {

// --- Which run it was, as far as its log shows

enum class Known { no, yes, unknown };

// By a flash that neither its component nor its adapter's stamp forces.
static Known wasForced(const Run& run) {
    Known forced = Known::unknown;
    for (const Flash& flash : run.flashes) {
        const bool free = flash.component != nullptr && flash.stampForces != 1 &&
                          !fwup::hasTrait(flash.component, fwup::alwaysForced) &&
                          !fwup::hasTrait(flash.component, fwup::hasMbaFlags);
        if (free && (flash.exitCode || flash.forced)) {
            forced = flash.forced ? Known::yes : Known::no;
        }
    }
    return forced;
}

// Whether a port has such a component; without a table nobody knows, nor of ports that were not
// read.
static Known carries(const Run& run, bool (*isSuch)(const fwup::Component&)) {
    if (run.before.empty()) {
        return Known::unknown;
    }
    for (const fwup::Component& component : fwup::components) {
        const size_t column = fwup::columnOf(component);
        for (const Port& port : run.before) {
            if (isSuch(component) && column < versionColumns && !isAbsent(port.versions[column])) {
                return Known::yes;
            }
        }
    }
    return run.unread.empty() ? Known::no : Known::unknown;
}

// Whether the blocks of iSCSI configurations were to be removed. Where there are none, that is a
// forced update like any.
static Known removesBlocks(const Run& run) {
    if (!run.removals.empty() || run.cutIn.find(" dir -delete ") != std::string::npos) {
        return Known::yes;
    }
    const bool keeps = std::any_of(run.flashes.begin(), run.flashes.end(), [](const Flash& flash) {
        return fwup::hasTrait(flash.component, fwup::replacesIscsiBlocks);
    });
    const Known carried = carries(run, [](const fwup::Component& component) {
        return fwup::hasTrait(&component, fwup::replacesIscsiBlocks);
    });
    return keeps || carried == Known::no ? Known::no : Known::unknown;
}

// The options of the updates that finish this one's job, in the order of preference. It has no
// more than one where the log tells which it was, or where all that it may have been do the same.
static std::vector<std::string> updatesFor(const Run& run, bool force) {
    const Known forced = wasForced(run);
    const Known removes = removesBlocks(run);
    if (removes == Known::yes) {
        return {" -iscsicfgupdate"};
    }
    if (forced == Known::no) {
        return {force ? " -f" : ""};
    }
    std::vector<std::string> options;
    if (!force && forced == Known::unknown) {
        options.emplace_back("");
    }
    options.emplace_back(" -f");
    if (removes == Known::unknown) {
        options.emplace_back(" -iscsicfgupdate");
    }
    if (carries(run, [](const fwup::Component& component) {
            return component.vtNcsiName != nullptr;
        }) != Known::no) {
        options.emplace_back(" -vtncsi");
    }
    return options;
}

static std::vector<std::string> repetitionsOf(const Run& run, bool force) {
    if (run.operation == Operation::update) {
        return updatesFor(run, force);
    }
    if (run.operation == Operation::none) {
        return {};
    }
    std::vector<std::string> options = {wordsOf(run.operation).option};
    if (run.mayDisableAll) {
        options.emplace_back(wordsOf(Operation::disableManagement).option);
    }
    return options;
}

// --- Steps

static std::string join(const std::vector<std::string>& texts, const char* between) {
    std::string joined;
    for (const std::string& text : texts) {
        joined += (joined.empty() ? "" : between) + text;
    }
    return joined;
}

static Step runAgain(const Run& run, bool force) {
    std::vector<std::string> commands;
    for (const std::string& option : repetitionsOf(run, force)) {
        commands.push_back("./zentrix" + option);
    }
    if (commands.empty()) {
        return {StepCode::run,
                "Run it again with the options that it had; the log doesn't tell them."};
    }
    if (commands.size() > 1) {
        return {StepCode::run, "Run " + join(commands, " or ") +
                                   " again, whichever it was; the log doesn't tell."};
    }
    return {StepCode::run, "Run " + commands.front() + ".", commands.front()};
}

static void addSupport(std::vector<Step>& next, const std::vector<std::string>& macs,
                       const std::string& why) {
    const std::string whom = macs.empty() ? "" : " about " + join(macs, ", ");
    next.push_back({StepCode::support, "Contact Marvek support" + whom + why + "."});
}

void addNext(const Run& run, const Tasks& tasks, Summary& summary) {
    std::vector<Step>& next = summary.next;
    const unsigned actions = tasks.actions;
    const bool rebootFirst = (actions & actReboot) != 0;
    const bool runs = (actions & (actRepeat | actForce)) != 0;
    if (run.cutOff) {
        next.push_back(
            {StepCode::checkNothingRuns,
             "See that the run has ended: on that server, pgrep -x 'zentrix|lnxfwvt2' must show nothing. Wait as long as it does."});
    }
    if ((actions & actStayUp) != 0) {
        next.push_back({StepCode::stayUp, "Do not reboot before a run has ended well."});
    }
    if (!tasks.supportMacs.empty()) {
        addSupport(next, tasks.supportMacs, "");
    }
    for (const std::string& errand : tasks.errands) {
        next.push_back({StepCode::mend, errand});
    }
    if (!tasks.downMacs.empty()) {
        next.push_back(
            {StepCode::loadDriver, "Load a driver for " + join(tasks.downMacs, ", ") + "."});
    }
    if (rebootFirst) {
        next.push_back({StepCode::reboot, "Reboot."});
    }
    if (runs) {
        next.push_back(runAgain(run, (actions & actForce) != 0));
    }
    if (summary.rebootNeeded && !rebootFirst) {
        next.push_back(
            {StepCode::reboot, runs ? "Reboot once that run has ended well." : "Reboot."});
    }
}

// --- What came before

static bool isOfServer(const Past& past, const Run& run) {
    const bool listsNone = past.macs.empty() && run.macs.empty();
    return listsNone || std::find_first_of(past.macs.begin(), past.macs.end(), run.macs.begin(),
                                           run.macs.end()) != past.macs.end();
}

// Whether this run was the one that the earlier one asked for.
static bool wasNextStep(const Past& past, const Run& run) {
    const bool asked = std::any_of(past.next.begin(), past.next.end(), [&run](const Step& step) {
        const bool forced = step.command.find(" -f") != std::string::npos;
        return step.code == StepCode::run && (!forced || wasForced(run) != Known::no);
    });
    return asked && (past.operation == run.operation || past.operation == Operation::none);
}

// Each run adds the output to a log of its own.
static std::string withoutLog(const std::string& command) {
    return command.substr(0, command.find(" >"));
}

// A run that was cut off says nothing of the trouble before, unless it was cut off in the same
// command.
static bool endedAlike(const Past& past, const Run& run) {
    return !run.cutOff || (!run.cutIn.empty() && withoutLog(run.cutIn) == withoutLog(past.cutIn));
}

static std::vector<std::string> troublesOf(const Summary& summary) {
    std::vector<std::string> troubles;
    for (const Problem& problem : summary.problems) {
        // What keeps a component from being written may have another name the second time.
        const bool ofComponent = !problem.component.empty();
        troubles.push_back(problem.mac + (ofComponent ? problem.component : " " + problem.kind));
    }
    return troubles;
}

static void endWithSupport(Summary& summary, const std::vector<std::string>& macs) {
    std::vector<Step> next;
    for (const Step& step : summary.next) {
        if (step.code == StepCode::stayUp) {
            next.push_back({StepCode::stayUp, "Do not reboot."});
        } else if (step.code != StepCode::run && step.code != StepCode::reboot &&
                   step.code != StepCode::support) {
            next.push_back(step);
        }
    }
    addSupport(next, macs, ": the same has come again after the next step was done");
    summary.next = std::move(next);
}

void heedHistory(const Run& run, Summary& summary, History& history) {
    const std::vector<std::string> troubles = troublesOf(summary);
    const auto past = std::find_if(history.rbegin(), history.rend(),
                                   [&run](const Past& one) { return isOfServer(one, run); });
    Past now = {run.macs, run.operation, troubles, summary.next, run.cutIn};
    if (past != history.rend() && endedAlike(*past, run) && wasNextStep(*past, run)) {
        std::vector<std::string> macs;
        bool again = run.cutOff;
        for (size_t i = 0; i < troubles.size(); i++) {
            if (std::find(past->troubles.begin(), past->troubles.end(), troubles[i]) !=
                past->troubles.end()) {
                again = true;
                if (!summary.problems[i].mac.empty()) {
                    addOnce(macs, summary.problems[i].mac);
                }
            }
        }
        if (again) {
            endWithSupport(summary, macs);
        }
    }
    history.push_back(std::move(now));
}

}  // namespace report
