#include "summary.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <utility>

namespace report {

template <typename Value>
static void addOnce(std::vector<Value>& values, const Value& value) {
    if (std::find(values.begin(), values.end(), value) == values.end()) {
        values.push_back(value);
    }
}

// --- Adapters

using Rows = std::map<std::string, const Port*>;

// The first row of each port counts.
static Rows indexRows(const std::vector<Port>& table) {
    Rows rows;
    for (const Port& port : table) {
        rows.emplace(port.mac, &port);
    }
    return rows;
}

static const Port* findRow(const Rows& rows, const std::string& mac) {
    const Rows::const_iterator at = rows.find(mac);
    return at == rows.end() ? nullptr : at->second;
}

// The ports of a bus are one adapter. A bus that isn't known (-1) says nothing
// of the kind; the ports of a run without a table stand together.
static AdapterSummary& placeFor(Summary& summary, const Port* row) {
    const bool hasBus = row != nullptr && row->bus >= 0;
    for (AdapterSummary& adapter : summary.adapters) {
        if (hasBus ? adapter.bus == row->bus : row == nullptr && !adapter.bus) {
            return adapter;
        }
    }
    summary.adapters.emplace_back();
    if (hasBus) {
        summary.adapters.back().bus = row->bus;
    }
    return summary.adapters.back();
}

// Those of the table, or of the list where there is none, and any that the pass
// visits besides.
static std::vector<std::string> macsOf(const Run& run) {
    std::vector<std::string> macs;
    for (const Port& port : run.before) {
        macs.push_back(port.mac);
    }
    if (run.before.empty()) {
        macs = run.macs;
    }
    std::set<std::string> told(macs.begin(), macs.end());
    for (const Visit& visit : run.visits) {
        if (told.insert(visit.mac).second) {
            macs.push_back(visit.mac);
        }
    }
    return macs;
}

static void addPorts(const Run& run, Summary& summary) {
    const Rows before = indexRows(run.before);
    const Rows after = indexRows(run.after);
    for (const std::string& mac : macsOf(run)) {
        PortSummary port;
        port.mac = mac;
        port.before = findRow(before, mac);
        port.after = findRow(after, mac);
        if (port.before != nullptr) {
            port.label = port.before->label;
            if (port.before->bus >= 0) {
                port.device = port.before->device;
                port.function = port.before->function;
            }
        }
        placeFor(summary, port.before).ports.push_back(port);
    }
}

static PortSummary* portOf(AdapterSummary& adapter, const std::string& mac) {
    for (PortSummary& port : adapter.ports) {
        if (port.mac == mac) {
            return &port;
        }
    }
    return nullptr;
}

static void addVisit(const Visit& visit, AdapterSummary& adapter, bool isFirst) {
    PortSummary* port = portOf(adapter, visit.mac);
    port->down = visit.down || visit.driver == "NA";
    port->corrupted = visit.corrupted;
    if (visit.driver != "NA") {
        port->driver = visit.driver;
    }
    // A later port of the adapter reads the stamp of this very run.
    if (isFirst) {
        adapter.stampBefore = visit.onCard;
    }
    if (visit.stamped) {
        adapter.stampWritten = visit.build;
    }
    if (visit.crc != CrcOutcome::none) {
        adapter.checks.push_back(&visit);
    }
    adapter.yb = std::max(adapter.yb, visit.yb);
}

static std::map<std::string, AdapterSummary*> indexAdapters(Summary& summary) {
    std::map<std::string, AdapterSummary*> adapters;
    for (AdapterSummary& adapter : summary.adapters) {
        for (const PortSummary& port : adapter.ports) {
            adapters.emplace(port.mac, &adapter);
        }
    }
    return adapters;
}

// Every port that was visited or flashed is one of the summary's.
static void addWork(const Run& run, Summary& summary) {
    const std::map<std::string, AdapterSummary*> adapters = indexAdapters(summary);
    std::set<const AdapterSummary*> seen;
    for (const Visit& visit : run.visits) {
        AdapterSummary* adapter = adapters.at(visit.mac);
        addVisit(visit, *adapter, seen.insert(adapter).second);
        if (visit.build) {
            summary.buildVersion = visit.build;
        }
    }
    for (const Flash& flash : run.flashes) {
        adapters.at(flash.mac)->flashes.push_back(&flash);
    }
}

// --- Problems

// Whether a plain run would flash this component again.
static bool needsForce(const Flash& flash) {
    const bool alwaysForced =
        flash.component == "mfw1" || flash.component == "ib" || flash.component == "mba";
    return flash.stampForces == 1 || (flash.forced && !alwaysForced);
}

using Flashes = std::map<std::pair<std::string, std::string>, const Flash*>;

// By port and component; the first of each counts.
static Flashes indexFlashes(const Run& run) {
    Flashes flashes;
    for (const Flash& flash : run.flashes) {
        flashes.emplace(std::make_pair(flash.mac, flash.component), &flash);
    }
    return flashes;
}

struct Work {
    const Run& run;
    Summary& summary;
    Flashes flashes;
    unsigned actions = actNothing;
    bool failed = false;
    std::vector<std::string> errands = {};
    std::vector<std::string> downMacs = {};
    std::vector<std::string> supportMacs = {};
};

// What the manual page says of all texts about the second discovery.
constexpr const char* lateAdapters = "the adapters are as the update left them.";

static const Flash* flashOf(const Work& work, const Finding& finding) {
    const auto at = work.flashes.find({finding.mac, finding.component});
    return at == work.flashes.end() ? nullptr : at->second;
}

// A port whose directory was not read shows no firmware, whatever it carries.
static bool wasNotRead(const Run& run, const std::string& mac) {
    return std::any_of(run.findings.begin(), run.findings.end(), [&mac](const Finding& finding) {
        return finding.mac == mac && !finding.late &&
               (finding.kind == LineKind::notRead || finding.kind == LineKind::noInventory);
    });
}

static unsigned actionsFor(const Advice& advice, const Run& run, const Finding& finding) {
    const bool misread = finding.kind == LineKind::corrupted && wasNotRead(run, finding.mac);
    return misread ? unsigned{actForce} : advice.actions;
}

// Some of the tool's lines don't name the port that they are about.
static std::string textWithPort(const Finding& finding) {
    const bool named = finding.text.find(finding.mac) != std::string::npos;
    return named ? finding.text : finding.text + " (port " + finding.mac + ")";
}

static void addProblem(Work& work, const Finding& finding) {
    const Advice* advice = adviceFor(finding.kind);
    if (advice == nullptr) {
        return;
    }
    const unsigned actions = actionsFor(*advice, work.run, finding);
    const char* adapters = finding.late ? lateAdapters : advice->adapters;
    work.summary.problems.push_back({advice->word, finding.mac, finding.component, finding.line,
                                     textWithPort(finding), advice->cause, adapters, advice->next});
    work.failed = work.failed || advice->failure;
    work.actions |= actions;
    if (advice->errand != nullptr) {
        addOnce(work.errands, std::string(advice->errand));
    }
    if ((actions & actDriver) != 0) {
        addOnce(work.downMacs, finding.mac);
    }
    if ((actions & actSupport) != 0) {
        addOnce(work.supportMacs, finding.mac);
    }
    const Flash* flash = flashOf(work, finding);
    if (flash != nullptr && needsForce(*flash)) {
        work.actions |= actForce;
    }
}

// Of a dry run, one line stands for all that was held back.
static void addFindings(Work& work) {
    for (const Finding& finding : work.run.findings) {
        const bool again = finding.kind == LineKind::skipped && work.summary.dryRun;
        work.summary.dryRun = work.summary.dryRun || finding.kind == LineKind::skipped;
        if (!again) {
            addProblem(work, finding);
        } else if (const Flash* flash = flashOf(work, finding)) {
            work.actions |= needsForce(*flash) ? actForce : actNothing;
        }
    }
}

static void addNotAccepted(Work& work) {
    for (const Flash& flash : work.run.flashes) {
        if (flash.notAccepted) {
            addProblem(work, {LineKind::notAccepted, flash.line,
                              "Updating " + flash.mac + " using file " + flash.image, flash.mac,
                              flash.component});
        }
    }
}

// A pass that goes on to its end although a port has not been stamped ran out
// of its build version; it says so on standard error alone.
static void addMissingBuildVersion(Work& work) {
    const Run& run = work.run;
    if (run.cutOff || run.visits.empty() || run.visits.back().stampRead) {
        return;
    }
    addProblem(work, {LineKind::noBuildVersion, run.visits.back().line, "Error in opening file",
                      run.visits.back().mac, ""});
}

// The column of the table that shows a component.
static const char* columnOf(const std::string& component) {
    static const char* const columns[][2] = {
        {"bc", "boot"}, {"mfw1", "mfw"}, {"ipmi", "ipmi"}, {"asf", "asf"},   {"mba", "pxe"},
        {"l2t", "l2"},  {"ump", "ump"},  {"ncsi", "ncsi"}, {"imfw", "imfw"}, {"ib", "iscsi"}};
    for (const auto& row : columns) {
        if (component == row[0]) {
            return row[1];
        }
    }
    return "";
}

static const std::string* versionOf(const Port* port, const std::string& component) {
    const char* column = columnOf(component);
    for (size_t i = 0; port != nullptr && i < versionColumns; i++) {
        if (strcmp(columnNames[i], column) == 0) {
            return &port->versions[i];
        }
    }
    return nullptr;
}

static bool isUnchanged(AdapterSummary& adapter, const Flash& flash) {
    const PortSummary* port = portOf(adapter, flash.mac);
    const std::string* before = versionOf(port->before, flash.component);
    const std::string* after = versionOf(port->after, flash.component);
    return before != nullptr && after != nullptr && *before == *after;
}

// Unforced, the utility writes newer images only, so the version must change.
// A forced flash may write the same version again; but when not one of an
// adapter with an older stamp changes, nothing may have been written at all.
static void addUnchanged(Work& work) {
    for (AdapterSummary& adapter : work.summary.adapters) {
        bool changed = false;
        for (const Flash* flash : adapter.flashes) {
            changed = changed ||
                      (flash->outcome == FlashOutcome::updated && !isUnchanged(adapter, *flash));
        }
        for (const Flash* flash : adapter.flashes) {
            const bool suspect = !flash->forced || (flash->stampForces == 1 && !changed);
            if (flash->outcome == FlashOutcome::updated && suspect &&
                isUnchanged(adapter, *flash)) {
                addProblem(work, {LineKind::unchanged, flash->line,
                                  "Updating " + flash->mac + " using file " + flash->image,
                                  flash->mac, flash->component});
            }
        }
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
        if ((port.before->versions[i] == "NA") != (port.after->versions[i] == "NA")) {
            return columnNames[i];
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

static void addDifferingAnswers(Work& work) {
    for (const AdapterSummary& adapter : work.summary.adapters) {
        for (const PortSummary& port : adapter.ports) {
            const std::string text = whatDiffers(adapter.bus ? adapter.ports.front() : port, port);
            if (!text.empty()) {
                addProblem(work, {LineKind::answersDiffer, 0, text, port.mac, ""});
                work.actions |= work.run.hasAfter ? actForce : actNothing;
            }
        }
    }
}

static void addUnknownPorts(Work& work) {
    for (const AdapterSummary& adapter : work.summary.adapters) {
        for (const PortSummary& port : adapter.ports) {
            if (port.before != nullptr && port.before->bus < 0) {
                addProblem(work, {LineKind::unknownToLibrary, 0, port.mac + " is on an unknown bus",
                                  port.mac, ""});
            }
        }
    }
}

// Each reading of the field YB has an outcome, unless nothing could be read.
static void addUnreadYb(Work& work) {
    for (const Visit& visit : work.run.visits) {
        const bool over = !work.run.cutOff || &visit != &work.run.visits.back();
        if (visit.ybLine != 0 && visit.yb == YbOutcome::none && over) {
            addProblem(work,
                       {LineKind::notRead, visit.ybLine,
                        "The field YB of " + visit.mac + " could not be read", visit.mac, ""});
        }
    }
}

// --- A run that was cut off

static bool wasFlashing(const Run& run) {
    return run.cutIn.find(" upgrade ") != std::string::npos;
}

static void addCutOff(Work& work) {
    const Run& run = work.run;
    if (!run.cutOff) {
        return;
    }
    const bool inPass = !run.visits.empty();
    Finding finding = {LineKind::cutOff, run.lines, "", inPass ? run.visits.back().mac : "", ""};
    finding.text = run.cutIn.empty() ? "The log ends in the middle."
                                     : "About to execute: \"" + run.cutIn + "\"";
    finding.text.erase(std::remove(finding.text.begin(), finding.text.end(), '\n'),
                       finding.text.end());
    addProblem(work, finding);
    Problem& problem = work.summary.problems.back();
    if (wasFlashing(run) && !run.flashes.empty()) {
        const Flash& flash = run.flashes.back();
        problem.adapters = "the adapter with port " + flash.mac + " may be half flashed: its " +
                           flash.component +
                           " was being written. Those before it are as their lines say, those "
                           "after it are untouched.";
        problem.next = "do not reboot; run again with -f.";
        work.actions |= actStayUp | actForce;
    } else if (inPass) {
        problem.adapters = "the one with port " + run.visits.back().mac +
                           " was at work, but no flash was going on. Those before it are as "
                           "their lines say, those after it are untouched.";
        problem.next = "run again, with -f because the adapter may have been stamped.";
        work.actions |= actForce;
    } else {
        problem.adapters = run.operation == Operation::update || run.switches.empty()
                               ? "not stamped and not flashed."
                               : "the switches before this one are as their lines say.";
        problem.next = "run again.";
    }
    if (run.operation == Operation::update) {
        addOnce(work.errands,
                std::string("Remove YB_Data1.log to YB_Data4.log in the package directory."));
    }
}

// --- Outcome and what is left to do

static Outcome outcomeOf(const Work& work) {
    const Run& run = work.run;
    if (run.cutOff) {
        return Outcome::cutOff;
    }
    for (const Finding& finding : run.findings) {
        if (finding.kind == LineKind::usageError) {
            return Outcome::usageError;
        }
        if (finding.kind == LineKind::macsCorrected) {
            return Outcome::rebootFirst;
        }
    }
    if (run.exitStatus == 171) {
        return Outcome::noAdapters;
    }
    if (run.exitStatus == 172) {
        return Outcome::adapterDown;
    }
    return run.exitStatus != 0 || work.failed ? Outcome::failed : Outcome::clean;
}

static std::string join(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts) {
        joined += (joined.empty() ? "" : ", ") + text;
    }
    return joined;
}

static const char* optionOf(Operation operation) {
    switch (operation) {
        case Operation::versions:
            return " -v";
        case Operation::directory:
            return " -dir";
        case Operation::iscsiVersions:
            return " -iscsicfgversion";
        case Operation::disableManagement:
            return " -nomfw";
        case Operation::enableNcsi:
            return " -ncsienable";
        case Operation::disableNcsi:
            return " -ncsidisable";
        default:
            return "";
    }
}

static void addNextRun(const Work& work, std::vector<Step>& next) {
    const std::string tool = "./zentrix";
    if ((work.actions & actForce) != 0) {
        next.push_back({StepCode::run, "Run " + tool + " -f.", tool + " -f"});
    } else if ((work.actions & actRunAgain) == 0) {
        return;
    } else if (work.run.operation == Operation::none) {
        next.push_back({StepCode::run, "Run ./zentrix again as before.", ""});
    } else {
        const std::string command = tool + optionOf(work.run.operation);
        next.push_back({StepCode::run, "Run " + command + " again.", command});
    }
}

static void addNext(const Work& work) {
    std::vector<Step>& next = work.summary.next;
    const bool stayUp = (work.actions & actStayUp) != 0;
    const bool rebootFirst = (work.actions & actReboot) != 0;
    if (work.run.cutOff) {
        next.push_back(
            {StepCode::checkNothingRuns,
             "See that neither zentrix nor lnxfwvt2 runs on that server: pgrep -x 'zentrix|lnxfwvt2' shows nothing.",
             ""});
    }
    if (stayUp) {
        next.push_back({StepCode::stayUp, "Do not reboot before the next run has ended well.", ""});
    }
    if (!work.supportMacs.empty()) {
        next.push_back({StepCode::support,
                        "Contact Marvek support about " + join(work.supportMacs) + ".", ""});
    }
    for (const std::string& errand : work.errands) {
        next.push_back({StepCode::mend, errand, ""});
    }
    if (!work.downMacs.empty()) {
        next.push_back(
            {StepCode::loadDriver, "Load a driver for " + join(work.downMacs) + ".", ""});
    }
    if (rebootFirst) {
        next.push_back({StepCode::reboot, "Reboot.", ""});
    }
    addNextRun(work, next);
    if (work.summary.rebootNeeded && !rebootFirst) {
        next.push_back({StepCode::reboot, stayUp ? "Then reboot." : "Reboot.", ""});
    }
}

static bool needsReboot(const Run& run) {
    for (const Flash& flash : run.flashes) {
        if (flash.outcome == FlashOutcome::rebootNeeded) {
            return true;
        }
    }
    for (const Switch& one : run.switches) {
        if (one.outcome == SwitchOutcome::rebootNeeded) {
            return true;
        }
    }
    return false;
}

Summary summarize(const Run& run, History* /*history*/) {
    Summary summary;
    addPorts(run, summary);
    addWork(run, summary);
    Work work = {run, summary, indexFlashes(run)};
    addFindings(work);
    addNotAccepted(work);
    addMissingBuildVersion(work);
    addUnchanged(work);
    addDifferingAnswers(work);
    addUnknownPorts(work);
    addUnreadYb(work);
    addCutOff(work);
    summary.rebootNeeded = needsReboot(run);
    summary.outcome = outcomeOf(work);
    if (summary.outcome == Outcome::rebootFirst) {
        summary.rebootNeeded = true;
    }
    addNext(work);
    return summary;
}

}  // namespace report
