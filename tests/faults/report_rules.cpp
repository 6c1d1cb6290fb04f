#include "report_rules.h"

#include <algorithm>
#include <set>

#include "text.h"
#include "input.h"
#include "names.h"

namespace faults {

using report::Problem;
using Adapter = nlohmann::json;
using Kinds = std::initializer_list<const char*>;

Told tell(const std::string& log, report::History* history) {
    const std::string path = "/tmp/told.log";
    e2e::writeFile(path, log);
    Told told;
    std::string trouble;
    told.isRead = report::readLog(path, told.run, trouble);
    if (told.isRead) {
        told.summary = report::summarize(told.run, history);
    }
    return told;
}

static Told tell(const Trial& trial) {
    return tell(trial.first.result.log);
}

static bool isNamed(const Case& place, std::initializer_list<const char*> names) {
    return std::any_of(names.begin(), names.end(),
                       [&](const char* name) { return std::string(place.fault->name) == name; });
}

// The command that the fault struck; empty when it was none.
static std::string struckCommand(const Case& place, const Run& run) {
    unsigned number = 0;
    for (const std::string& command : run.result.commands) {
        if (report::wordOf(command, 0) == "./lnxfwvt2" && ++number == place.place) {
            return command;
        }
    }
    return "";
}

static bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// Whether the fault was a lie about what a command with both words did.
static bool isLie(const Trial& trial, const std::string& word, const std::string& other) {
    const std::string struck = struckCommand(trial.place, trial.first);
    return isNamed(trial.place, {"exit-0"}) && contains(struck, word) && contains(struck, other);
}

// --- Status and cut

bool reportTellsStatus(const Trial& trial) {
    const Told told = tell(trial);
    if (trial.place.fault->kills) {
        return !told.run.exitStatus.has_value();
    }
    // A log whose end was lost looks like that of a killed run.
    const bool unknown = trial.place.fault->losesLog && (!told.isRead || !told.run.exitStatus);
    return unknown || told.run.exitStatus == trial.first.result.status;
}

bool reportTellsCut(const Trial& trial) {
    const Told told = tell(trial);
    const bool cut = told.summary.outcome == report::Outcome::cutOff;
    if (!trial.place.fault->kills) {
        return !cut || trial.place.fault->losesLog;
    }
    const e2e::Texts& commands = trial.first.result.commands;
    return cut && !commands.empty() && told.run.cutIn == commands.back() &&
           told.summary.problems.back().kind == "no-end" &&
           (told.run.visits.empty() || told.summary.problems.back().adapters.find(
                                           told.run.visits.back().mac) != std::string::npos);
}

// --- Adapters

static const Adapter* adapterWith(const Adapter& adapters, const std::string& mac) {
    for (const Adapter& adapter : adapters) {
        for (const Adapter& port : adapter.at("ports")) {
            if (port.at("mac") == mac) {
                return &adapter;
            }
        }
    }
    return nullptr;
}

// The version of a component, which stands alone or in an object.
static std::string versionIn(const Adapter& adapter, const std::string& component) {
    const Adapter& value = adapter.at("components").value(component, nlohmann::json());
    return value.is_object()   ? value.at("version").get<std::string>()
           : value.is_string() ? value.get<std::string>()
                               : "";
}

static bool isUpdated(report::FlashOutcome outcome) {
    return outcome == report::FlashOutcome::updated ||
           outcome == report::FlashOutcome::rebootNeeded;
}

// A component of the adapter with a port, told or true.
using Place = std::pair<int, std::string>;

// What is told to be updated has changed, or has been up to date before. What comes
// along with another component is not told.
static bool tellsFlashes(const Trial& trial, const Told& told) {
    std::set<Place> places;
    for (const report::Flash& flash : told.run.flashes) {
        const Adapter* before = adapterWith(trial.first.adaptersBefore, flash.mac);
        const Adapter* now = adapterWith(trial.first.adapters, flash.mac);
        const Adapter* right = adapterWith(trial.reference.adapters, flash.mac);
        if (before == nullptr) {
            return false;
        }
        if (isUpdated(flash.outcome) && flash.component != nullptr &&
            !isLie(trial, flash.mac, flash.image)) {
            const std::string version = versionIn(*now, flash.component->name);
            if (version == versionIn(*before, flash.component->name) &&
                version != versionIn(*right, flash.component->name)) {
                return false;
            }
            places.emplace(now->at("bus").get<int>(), flash.component->name);
        }
    }
    for (size_t i = 0; i < trial.first.adapters.size(); i++) {
        const Adapter& now = trial.first.adapters[i];
        for (const auto& [component, value] : now.at("components").items()) {
            const Place place(now.at("bus").get<int>(), component);
            if (component != "fcode" && places.count(place) == 0 &&
                versionIn(now, component) != versionIn(trial.first.adaptersBefore[i], component)) {
                return false;
            }
        }
    }
    return true;
}

static bool tellsStamps(const Trial& trial, const Told& told) {
    for (const report::AdapterSummary& one : told.summary.adapters) {
        const Adapter* adapter = adapterWith(trial.first.adapters, one.ports.front().mac);
        const std::optional<std::string> written = stampWritten(one);
        if (written && !isLie(trial, one.ports.front().mac, "-vpdv0") &&
            (adapter == nullptr || !adapter->contains("vpd") ||
             adapter->at("vpd").value("V0", "") != *written)) {
            return false;
        }
    }
    return true;
}

static bool tellsSwitches(const Trial& trial, const Told& told) {
    for (const report::Switch& one : told.run.switches) {
        std::string component = one.firmware;
        std::transform(component.begin(), component.end(), component.begin(), ::tolower);
        const Adapter* adapter = adapterWith(trial.first.adapters, one.mac);
        const bool done = one.outcome == report::SwitchOutcome::done ||
                          one.outcome == report::SwitchOutcome::rebootNeeded;
        if (adapter == nullptr) {
            return false;
        }
        const Adapter& value = adapter->at("components").at(component);
        const bool enabled = !value.is_object() || value.value("enabled", true);
        if (done && !isLie(trial, one.mac, " cfg ") &&
            enabled != (told.run.operation == report::Operation::enableNcsi)) {
            return false;
        }
    }
    return true;
}

bool reportTellsAdapters(const Trial& trial) {
    const Told told = tell(trial);
    return trial.place.fault->losesLog ||
           (tellsFlashes(trial, told) && tellsStamps(trial, told) && tellsSwitches(trial, told));
}

// --- Problems

static bool hasProblem(const Told& told, Kinds kinds, const std::string& mac) {
    const std::vector<Problem>& problems = told.summary.problems;
    return std::any_of(problems.begin(), problems.end(), [&](const Problem& problem) {
        return std::find(kinds.begin(), kinds.end(), problem.kind) != kinds.end() &&
               problem.mac == mac;
    });
}

// How a command of the utility that fails must be named. The first row that fits
// counts; each holds for the words behind the MAC.
static const struct {
    const char* words;
    Kinds kinds;
} failures[] = {
    {"upgrade ", {"flash-failed", "not-accepted"}},
    {"crc ", {"crc-failed"}},
    {"cfg -show vpdv0", {"stamp-check-failed"}},
    {"cfg -show vpdyb", {"not-read"}},
    {"cfg -noreset -vpdv0", {"stamp-failed"}},
    {"cfg -vpdyb", {"yb-failed"}},
    {"cfg ", {"switch-failed"}},
    {"dir -delete", {"block-not-removed"}},
    {"dir ", {"not-read"}},
    {"", {"no-adapters", "not-read"}},
};

static bool namesStruckCommand(const Trial& trial, const Told& told) {
    const std::string command = struckCommand(trial.place, trial.first);
    const bool failed = isNamed(trial.place, {"exit-1", "exit-unknown", "exit-70", "killed"}) ||
                        (isNamed(trial.place, {"exit-35"}) && !contains(command, " upgrade "));
    const std::string mac(report::wordOf(command, 1));
    const bool ofPort = mac.compare(0, 1, "<") != 0;
    if (!failed) {
        return true;
    }
    const std::string words = ofPort ? command.substr(command.find(mac) + mac.size() + 1) : "";
    const auto failure =
        std::find_if(std::begin(failures), std::end(failures),
                     [&](const auto& row) { return words.rfind(row.words, 0) == 0; });
    return hasProblem(told, failure->kinds, ofPort ? mac : "");
}

// What ends a pass, or comes before it, leaves adapters untouched that it doesn't
// name.
static bool concerns(const Problem& problem, const Adapter& adapter) {
    const std::string& kind = problem.kind;
    const bool endsPass =
        kind == "stamp-check-failed" || kind == "no-end" || kind == "no-build-version";
    return endsPass || problem.mac.empty() || contains(adapter.at("ports").dump(), problem.mac);
}

bool isTold(const std::vector<Problem>& told, const Adapter& adapter) {
    return std::any_of(told.begin(), told.end(),
                       [&](const Problem& problem) { return concerns(problem, adapter); });
}

// A directory stands in no log of the modes that switch.
bool isUntold(const Case& place, const Run& run) {
    const std::string mode = place.mode->name;
    const bool switches = mode == "-nomfw" || mode.compare(0, 5, "-ncsi") == 0;
    const std::string struck = struckCommand(place, run);
    const bool lies = isNamed(place, {"exit-0"});
    return (switches && report::wordOf(struck, 2) == "dir" &&
            (lies || place.fault->effect.contains("output"))) ||
           (lies && (contains(struck, " cfg ") || contains(struck, " -delete "))) ||
           (isNamed(place, {"exit-35"}) && contains(struck, " upgrade "));
}

static bool namesEveryAdapterLeft(const Trial& trial, const Told& told) {
    const bool canOnlyRemark = isNamed(trial.place, {"exit-0"});
    for (size_t i = 0; i < trial.first.adapters.size(); i++) {
        const Adapter& adapter = trial.first.adapters[i];
        if (adapter != trial.reference.adapters[i] && !isTold(told.summary.problems, adapter) &&
            !(canOnlyRemark && isTold(told.summary.remarks, adapter))) {
            return isUntold(trial.place, trial.first);
        }
    }
    return true;
}

bool reportTellsProblems(const Trial& trial) {
    const Told told = tell(trial);
    return trial.place.fault->losesLog ||
           (namesStruckCommand(trial, told) && namesEveryAdapterLeft(trial, told));
}

// Only the first adapter of the mode that has one is down, and one of the rack's
// has no second iSCSI block to remove.
static bool isOfMode(const Trial& trial, const Problem& problem) {
    const bool down = !trial.place.mode->edits.empty();
    const bool removesBlocks = std::string(trial.place.mode->name) == "-iscsicfgupdate";
    return (down && problem.kind == "adapter-down") ||
           (removesBlocks && problem.kind == "block-not-removed");
}

bool reportRaisesNoAlarm(const Trial& trial) {
    const bool disturbed = !isNamed(trial.place, {"none", "up-to-date"}) &&
                           !trial.place.fault->effect.contains("groupSignal");
    if (disturbed || trial.place.fault->kills) {
        return true;
    }
    const Told told = tell(trial);
    const std::vector<Problem>& problems = told.summary.problems;
    return std::all_of(problems.begin(), problems.end(),
                       [&trial](const Problem& problem) { return isOfMode(trial, problem); });
}

}  // namespace faults
