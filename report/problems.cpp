#include <algorithm>
#include <set>

#include "log/flash_tool_code.h"
#include "names.h"
#include "work.h"

namespace report {

struct Work {
    const Run& run;
    Summary& summary;
    Tasks tasks = {};
};

// --- What another port of the adapter healed

static bool isWritten(FlashOutcome outcome) {
    return outcome == FlashOutcome::updated || outcome == FlashOutcome::rebootNeeded;
}

// A port through which this component was written after it had failed; null when there is none.
static const Flash* healingFlash(const AdapterSummary& adapter, const Finding& finding) {
    for (const Flash* flash : adapter.flashes) {
        if (flash->line > finding.line && isWritten(flash->outcome) &&
            componentOf(*flash) == finding.component) {
            return flash;
        }
    }
    return nullptr;
}

// A later port whose flashes all did their job.
static const Flash* healingPort(const AdapterSummary& adapter, const Finding& finding) {
    const Flash* healer = nullptr;
    for (const Flash* flash : adapter.flashes) {
        if (flash->mac == finding.mac) {
            continue;
        }
        if (!isWritten(flash->outcome) && flash->outcome != FlashOutcome::notNeeded) {
            return nullptr;
        }
        healer = flash;
    }
    return healer;
}

// The port of the last check, where one after the finding has passed.
static std::string passedLater(const AdapterSummary& adapter, const Finding& finding) {
    std::string last;
    bool passed = false;
    for (const Visit* visit : adapter.visits) {
        last = visit->crc == CrcOutcome::none ? last : visit->mac;
        passed = passed || (visit->line > finding.line && visit->crc == CrcOutcome::passed);
    }
    return passed ? last : "";
}

// The port that made the finding good; empty when none did. Only a second table can show it.
static std::string healerOf(const Work& work, const Finding& finding) {
    const AdapterSummary* adapter = adapterOf(work.summary, finding.mac);
    const unsigned actions = finding.advice.actions;
    if (adapter == nullptr || !adapter->bus || !work.run.hasAfter) {
        return "";
    }
    if ((actions & actStayUp) != 0) {
        return passedLater(*adapter, finding);
    }
    const bool ofPort = (actions & (actDriver | actSupport)) != 0;
    const Flash* flash = ofPort                      ? healingPort(*adapter, finding)
                         : finding.component.empty() ? nullptr
                                                     : healingFlash(*adapter, finding);
    return flash == nullptr ? "" : flash->mac;
}

static void heal(Finding& finding, Problem& problem, const std::string& healer) {
    const bool ofCheck = (finding.advice.actions & actStayUp) != 0;
    problem.adapters = ofCheck ? "whole: the later check through " + healer + " has passed."
                               : "updated through " + healer + ", as the second table shows.";
    if ((finding.advice.actions & actDriver) == 0) {
        problem.next = "nothing for this adapter.";
        finding.advice.errand = nullptr;
    } else {
        problem.next = "load the driver if the port is to be used; the firmware needs nothing.";
    }
    finding.advice.actions &= actDriver;
}

// --- From findings to problems and remarks

// What the manual page says of all texts about the second discovery.
constexpr const char* lateAdapters = "the adapters are as the update left them.";

// Some of the tool's lines don't name the port that they are about.
static std::string textWithPort(const Finding& finding) {
    const bool named = finding.text.find(finding.mac) != std::string::npos;
    return named ? finding.text : finding.text + " (port " + finding.mac + ")";
}

static Problem toProblem(const Finding& finding) {
    const Advice& advice = finding.advice;
    return {advice.kind,
            finding.mac,
            finding.component,
            finding.line,
            textWithPort(finding),
            advice.cause,
            finding.late ? lateAdapters : advice.adapters,
            advice.next};
}

static void addTasks(Tasks& tasks, const Finding& finding) {
    const Advice& advice = finding.advice;
    tasks.failed = tasks.failed || (advice.actions & actFine) == 0;
    tasks.actions |= advice.actions;
    if (advice.errand != nullptr) {
        addOnce(tasks.errands, std::string(advice.errand));
    }
    if ((advice.actions & actDriver) != 0) {
        addOnce(tasks.downMacs, finding.mac);
    }
    if ((advice.actions & actSupport) != 0) {
        addOnce(tasks.supportMacs, finding.mac);
    }
}

static void addProblem(Work& work, Finding finding) {
    Problem problem = toProblem(finding);
    const std::string healer = healerOf(work, finding);
    if (!healer.empty()) {
        heal(finding, problem, healer);
    }
    addTasks(work.tasks, finding);
    work.summary.problems.push_back(std::move(problem));
}

static void addRemark(Work& work, const Finding& finding) {
    work.summary.remarks.push_back(toProblem(finding));
}

// A port whose directory was not read shows no firmware, whatever it carries.
static bool wasNotRead(const Run& run, const std::string& mac) {
    return std::find(run.unread.begin(), run.unread.end(), mac) != run.unread.end();
}

// Exit code 70 in a flash that the stamp forces: the tool's line is that of any failure.
static bool isRefusal(const Run& run, const Finding& finding) {
    return std::any_of(run.flashes.begin(), run.flashes.end(), [&](const Flash& flash) {
        return flash.mac == finding.mac && componentOf(flash) == finding.component &&
               flash.line < finding.line && flash.outcome == FlashOutcome::failed &&
               flash.exitCode == fwup::codeNotApplied;
    });
}

// A block that was removed through another port, or that no directory of the port lists.
static bool isWithoutBlock(const Work& work, const Finding& finding) {
    const AdapterSummary* adapter = adapterOf(work.summary, finding.mac);
    bool listed = false;
    bool read = false;
    for (const Removal& removal : work.run.removals) {
        if (removal.block->name != finding.component) {
            continue;
        }
        if (removal.done && adapter != nullptr && adapter->bus &&
            adapterOf(work.summary, removal.mac) == adapter) {
            return true;
        }
        for (const Directory& directory : work.run.directories) {
            read = read || directory.mac == finding.mac;
            listed = listed || (directory.mac == finding.mac && lists(directory, *removal.block));
        }
    }
    return read && !listed;
}

static void addFindings(Work& work) {
    for (Finding finding : work.run.findings) {
        const bool ofBlock = std::any_of(
            std::begin(fwup::iscsiBlocks), std::end(fwup::iscsiBlocks),
            [&finding](const fwup::IscsiBlock& block) { return finding.component == block.name; });
        if (ofBlock && isWithoutBlock(work, finding)) {
            finding.advice = adviceFor(Matter::noBlock);
            addRemark(work, finding);
            continue;
        }
        if ((finding.advice.actions & actSupport) != 0 && wasNotRead(work.run, finding.mac)) {
            finding.advice.actions = actForce;
        }
        if (isRefusal(work.run, finding)) {
            const char* kind = finding.advice.kind;
            finding.advice = adviceFor(Matter::refused);
            finding.advice.kind = kind;
            finding.advice.actions = actForce;  // once there is another image: the stamp is written
        }
        addProblem(work, finding);
    }
}

// --- What no line says

// A pass that goes on to its end although a port has not been stamped ran out
// of its build version; it says so on standard error alone.
static void addMissingBuildVersion(Work& work) {
    const Run& run = work.run;
    if (run.cutOff || run.visits.empty() || run.visits.back().stampRead) {
        return;
    }
    addProblem(work, {adviceFor(Matter::noBuildVersion), run.visits.back().line,
                      "Error in opening file", run.visits.back().mac, ""});
}

static bool isUnchanged(const AdapterSummary& adapter, const Flash& flash) {
    if (flash.outcome != FlashOutcome::updated || flash.component == nullptr) {
        return false;
    }
    const size_t column = fwup::columnOf(*flash.component);
    return std::any_of(adapter.ports.begin(), adapter.ports.end(), [&](const PortSummary& port) {
        return port.mac == flash.mac && port.before != nullptr && port.after != nullptr &&
               column < versionColumns &&
               port.before->versions[column] == port.after->versions[column];
    });
}

// Unforced, the utility writes newer images only, so the version must change.
// A forced flash may write the very version that is there.
static void addUnchanged(Work& work, const AdapterSummary& adapter) {
    Finding same = {adviceFor(Matter::sameAsBefore), 0, "", "", ""};
    for (const Flash* flash : adapter.flashes) {
        if (!isUnchanged(adapter, *flash)) {
            continue;
        }
        const std::string name = componentOf(*flash);
        if (!flash->forced) {
            addProblem(
                work, {adviceFor(Matter::nothingWritten), flash->line,
                       "Updating " + flash->mac + " using file " + flash->image, flash->mac, name});
        } else if (same.mac.empty() || same.mac == flash->mac) {
            same.component = same.text.empty() ? name : "";
            same.line = same.line == 0 ? flash->line : same.line;
            same.mac = flash->mac;
            same.text += (same.text.empty() ? "" : ", ") + name;
        }
    }
    if (!same.text.empty()) {
        same.text = "The version of " + same.text + " on " + same.mac + " has not changed";
        addRemark(work, same);
    }
}

// --- Answers that don't fit together

static bool differ(const Port* a, const Port* b) {
    return a != nullptr && b != nullptr &&
           !std::equal(std::begin(a->versions), std::end(a->versions), std::begin(b->versions));
}

// The first column that holds a version in one table only; null when there is none.
static const char* columnThatCameOrWent(const PortSummary& port) {
    for (size_t i = 0; port.before != nullptr && port.after != nullptr && i < versionColumns; i++) {
        if (isAbsent(port.before->versions[i]) != isAbsent(port.after->versions[i])) {
            return fwup::versionColumns[i].heading;
        }
    }
    return nullptr;
}

static std::string whatDiffers(const PortSummary& first, const PortSummary& port) {
    const bool before = differ(first.before, port.before);
    if (before || differ(first.after, port.after)) {
        return first.mac + " and " + port.mac + " show different versions" +
               (before && port.after != nullptr ? " in the first table" : "");
    }
    const char* column = columnThatCameOrWent(port);
    return column == nullptr ? ""
                             : port.mac + " shows " + column + " in one of the two tables only";
}

static void addDifferingAnswers(Work& work, const AdapterSummary& adapter) {
    for (const PortSummary& port : adapter.ports) {
        const std::string text = whatDiffers(adapter.bus ? adapter.ports.front() : port, port);
        if (!text.empty()) {
            Finding finding = {adviceFor(Matter::answersDiffer), 0, text, port.mac, ""};
            finding.advice.actions = work.run.hasAfter ? actForce : actRepeat;
            addProblem(work, finding);
        }
        if (port.before != nullptr && port.before->bus == -1) {
            addProblem(work, {adviceFor(Matter::unknownToLibrary), 0,
                              port.mac + " is on an unknown bus", port.mac, ""});
        }
    }
}

// Each reading of the field YB has an outcome, unless nothing could be read.
static void addUnreadYb(Work& work) {
    for (const Visit& visit : work.run.visits) {
        const bool over = !work.run.cutOff || &visit != &work.run.visits.back();
        if (visit.ybLine != 0 && visit.yb == YbOutcome::none && over) {
            addProblem(work,
                       {adviceFor(Matter::notRead), visit.ybLine,
                        "The field YB of " + visit.mac + " could not be read", visit.mac, ""});
        }
    }
}

// --- A log without an end

static bool isCutInFlash(const Run& run) {
    return run.cutIn.find(" upgrade ") != std::string::npos && !run.flashes.empty();
}

static std::string stateAtEnd(const Run& run) {
    const std::string others =
        " Those before it are as their lines say. Those after it are untouched if the run ended with its log; if it went on, as on a full disk, nothing is known of them.";
    if (run.passOver && !run.visits.empty()) {
        return "all have had their turn, the one with port " + run.visits.back().mac +
               " the last, and are as their lines say.";
    }
    if (isCutInFlash(run)) {
        const Flash& flash = run.flashes.back();
        return "the adapter with port " + flash.mac + " may be half flashed: its " +
               componentOf(flash) + " was being written." + others;
    }
    if (!run.visits.empty()) {
        return "the one with port " + run.visits.back().mac +
               " was at work, but no flash was going on." + others;
    }
    return run.switches.empty() ? "not stamped and not flashed, if the run ended with its log."
                                : "the switches before this one are as their lines say.";
}

static void addNoEnd(Work& work) {
    const Run& run = work.run;
    if (run.headingAlone) {
        addProblem(work, {adviceFor(Matter::headingAlone), run.lines,
                          "The log holds its heading alone.", "", ""});
        return;
    }
    Finding finding = {adviceFor(Matter::noEnd), run.lines, "",
                       run.visits.empty() || run.passOver ? "" : run.visits.back().mac, ""};
    finding.text = run.cutIn.empty() ? "The log ends in the middle."
                                     : "About to execute: \"" + run.cutIn + "\"";
    finding.text.erase(std::remove(finding.text.begin(), finding.text.end(), '\n'),
                       finding.text.end());
    if (isCutInFlash(run)) {
        finding.component = componentOf(run.flashes.back());
        finding.advice.actions = actForce | actStayUp;
        finding.advice.next =
            "see first that the run has ended. Do not reboot; then run again, forced.";
    } else if (!run.visits.empty() && !run.passOver) {
        finding.advice.actions = actForce;
        finding.advice.next =
            "see first that the run has ended; then run again, forced because the adapter may have been stamped.";
    }
    addProblem(work, finding);
    work.summary.problems.back().adapters = stateAtEnd(run);
    if (run.operation == Operation::update) {
        addOnce(work.tasks.errands,
                std::string("Remove YB_Data1.log to YB_Data4.log in the package directory."));
    }
}

Tasks addProblems(const Run& run, Summary& summary) {
    Work work = {run, summary};
    addFindings(work);
    addMissingBuildVersion(work);
    for (const AdapterSummary& adapter : summary.adapters) {
        addUnchanged(work, adapter);
        addDifferingAnswers(work, adapter);
    }
    addUnreadYb(work);
    if (run.cutOff) {
        addNoEnd(work);
    }
    return work.tasks;
}

}  // namespace report
