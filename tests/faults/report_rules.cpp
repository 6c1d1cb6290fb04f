#include "report_rules.h"

#include <algorithm>
#include <set>
#include <sstream>

#include "command_text.h"
#include "log_reader.h"
#include "summary.h"

namespace faults {

using report::Problem;

struct Told {
    bool isRead = false;  // an empty log is refused
    report::Run run;
    report::Summary summary;
};

static Told tell(const Trial& trial) {
    report::LogReader reader;
    report::LineCutter cutter;
    report::readBytes(reader, cutter, trial.first.result.log);
    report::readRest(reader, cutter);
    const bool isRead = reader.number > 0 && reader.isLog;
    Told told = {isRead, report::finishLog(reader), {}};
    // It points to elements of the run, which stay where they are.
    told.summary = report::summarize(told.run);
    return told;
}

static bool isNamed(const Trial& trial, const char* name) {
    return std::string(trial.place.fault->name) == name;
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

static const nlohmann::json* adapterWith(const nlohmann::json& adapters, const std::string& mac) {
    for (const nlohmann::json& adapter : adapters) {
        for (const nlohmann::json& port : adapter.at("ports")) {
            if (port.at("mac") == mac) {
                return &adapter;
            }
        }
    }
    return nullptr;
}

// The version of a component, which stands alone or in an object.
static std::string versionIn(const nlohmann::json& adapter, const std::string& component) {
    const nlohmann::json& value = adapter.at("components").value(component, nlohmann::json());
    return value.is_object()   ? value.at("version").get<std::string>()
           : value.is_string() ? value.get<std::string>()
                               : "";
}

struct Image {
    std::string component;  // as adapters.json names it
    std::string version;
};

static Image readImage(const std::string& name) {
    Image image;
    std::istringstream lines(e2e::readFile(e2e::packageDirectory + "/" + name));
    std::string word;
    while (lines >> word) {
        if (word == "component") {
            lines >> image.component;
        } else if (word == "version") {
            lines >> image.version;
        }
    }
    image.component = image.component == "mbaf" ? "mba" : image.component;
    return image;
}

// An adapter's bus and a component of it.
using Place = std::pair<int, std::string>;

// Every image is newer than what the rack carries.
static std::set<Place> updatedPlaces(const Trial& trial) {
    std::set<Place> places;
    for (const nlohmann::json& adapter : trial.first.adapters) {
        for (const auto& [component, value] : adapter.at("components").items()) {
            const std::string id = adapter.at("device").get<std::string>();
            for (const std::string& part : {component, component + "f"}) {
                const Image image = readImage(id + part + ".bin");
                if (image.component == component &&
                    image.version == versionIn(adapter, component)) {
                    places.emplace(adapter.at("bus").get<int>(), component);
                }
            }
        }
    }
    return places;
}

static bool isUpdated(report::FlashOutcome outcome) {
    return outcome == report::FlashOutcome::updated ||
           outcome == report::FlashOutcome::rebootNeeded;
}

static bool tellsFlashes(const Trial& trial, const Told& told) {
    std::set<Place> places;
    for (const report::Flash& flash : told.run.flashes) {
        const nlohmann::json* adapter = adapterWith(trial.first.adapters, flash.mac);
        if (adapter == nullptr) {
            return false;
        }
        if (isUpdated(flash.outcome)) {
            places.emplace(adapter->at("bus").get<int>(), readImage(flash.image).component);
        }
    }
    return places == updatedPlaces(trial);
}

static bool tellsStamps(const Trial& trial, const Told& told) {
    for (const report::AdapterSummary& one : told.summary.adapters) {
        const nlohmann::json* adapter = adapterWith(trial.first.adapters, one.ports.front().mac);
        if (one.stampWritten && (adapter == nullptr || !adapter->contains("vpd") ||
                                 adapter->at("vpd").value("V0", "") != *one.stampWritten)) {
            return false;
        }
    }
    return true;
}

static bool tellsSwitches(const Trial& trial, const Told& told) {
    for (const report::Switch& one : told.run.switches) {
        std::string component = one.firmware;
        std::transform(component.begin(), component.end(), component.begin(), ::tolower);
        const nlohmann::json* adapter = adapterWith(trial.first.adapters, one.mac);
        const bool done = one.outcome == report::SwitchOutcome::done ||
                          one.outcome == report::SwitchOutcome::rebootNeeded;
        if (adapter == nullptr) {
            return false;
        }
        const nlohmann::json& value = adapter->at("components").at(component);
        const bool enabled = !value.is_object() || value.value("enabled", true);
        if (done && enabled != (told.run.operation == report::Operation::enableNcsi)) {
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

static bool hasProblem(const Told& told, std::initializer_list<const char*> kinds,
                       const std::string& mac) {
    const std::vector<Problem>& problems = told.summary.problems;
    return std::any_of(problems.begin(), problems.end(), [&](const Problem& problem) {
        return std::find(kinds.begin(), kinds.end(), problem.kind) != kinds.end() &&
               problem.text.find(mac) != std::string::npos;
    });
}

// How a command of the utility that fails must be named. The first row that fits
// counts; each holds for the words behind the MAC.
static const struct {
    const char* words;
    std::initializer_list<const char*> kinds;
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

// The command that the fault struck; empty when it was none.
static std::string struckCommand(const Trial& trial) {
    unsigned number = 0;
    for (const std::string& command : trial.first.result.commands) {
        if (report::wordOf(command, 0) == "./lnxfwvt2" && ++number == trial.place.place) {
            return command;
        }
    }
    return "";
}

static bool namesStruckCommand(const Trial& trial, const Told& told) {
    if (!isNamed(trial, "exit-1") && !isNamed(trial, "exit-70") && !isNamed(trial, "killed")) {
        return true;
    }
    const std::string command = struckCommand(trial);
    const std::string mac(report::wordOf(command, 1));
    const bool ofPort = mac.compare(0, 1, "<") != 0;
    const std::string words = ofPort ? command.substr(command.find(mac) + mac.size() + 1) : "";
    for (const auto& failure : failures) {
        if (words.compare(0, std::string(failure.words).size(), failure.words) == 0) {
            return hasProblem(told, failure.kinds, ofPort ? mac : "");
        }
    }
    return false;
}

static size_t countOnConsole(const Trial& trial, const std::string& marker) {
    const std::string& console = trial.first.result.console;
    size_t count = 0;
    for (size_t at = console.find(marker); at != std::string::npos;
         at = console.find(marker, at + 1)) {
        count++;
    }
    return count;
}

static size_t countProblems(const Told& told, std::initializer_list<const char*> kinds) {
    const std::vector<Problem>& problems = told.summary.problems;
    return static_cast<size_t>(
        std::count_if(problems.begin(), problems.end(), [&](const Problem& problem) {
            return std::find(kinds.begin(), kinds.end(), problem.kind) != kinds.end();
        }));
}

static bool namesWhatTheConsoleShows(const Trial& trial, const Told& told) {
    const bool silent = std::string(trial.place.mode->name).compare(0, 2, "-s") == 0;
    return silent || (countOnConsole(trial, "---> Update failed\n") ==
                          countProblems(told, {"flash-failed", "image-missing", "adapter-down",
                                               "firmware-corrupted"}) &&
                      countOnConsole(trial, "---> failed\n") ==
                          countProblems(told, {"stamp-failed", "crc-failed", "switch-failed"}));
}

// What ends a pass, or comes before it, leaves adapters untouched that it doesn't
// name.
static bool concerns(const Problem& problem, const nlohmann::json& adapter) {
    const std::string anyMac = "0200000000";
    const bool ofNone = problem.text.find(anyMac) == std::string::npos;
    const bool endsPass = problem.kind == "stamp-check-failed" || problem.kind == "no-end" ||
                          problem.kind == "no-build-version";
    bool named = false;
    for (const nlohmann::json& port : adapter.at("ports")) {
        named = named || problem.text.find(port.at("mac").get<std::string>()) != std::string::npos;
    }
    return ofNone || endsPass || named;
}

// A directory that claims to be whole stands in no log of these modes, so what it
// lacks is told by nothing.
static bool isUntold(const Trial& trial) {
    const std::string name = trial.place.mode->name;
    const bool switches = name == "-nomfw" || name.compare(0, 5, "-ncsi") == 0;
    return switches && trial.place.fault->effect.contains("output") &&
           report::wordOf(struckCommand(trial), 2) == "dir";
}

static bool namesEveryAdapterLeft(const Trial& trial, const Told& told) {
    if (isUntold(trial)) {
        return true;
    }
    const std::vector<Problem>& problems = told.summary.problems;
    for (size_t i = 0; i < trial.first.adapters.size(); i++) {
        const nlohmann::json& adapter = trial.first.adapters[i];
        const bool named =
            std::any_of(problems.begin(), problems.end(),
                        [&adapter](const Problem& problem) { return concerns(problem, adapter); });
        if (adapter != trial.reference.adapters[i] && !named) {
            return false;
        }
    }
    return true;
}

bool reportTellsProblems(const Trial& trial) {
    const Told told = tell(trial);
    return trial.place.fault->losesLog ||
           (namesStruckCommand(trial, told) && namesWhatTheConsoleShows(trial, told) &&
            namesEveryAdapterLeft(trial, told));
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
    const bool disturbed =
        !isNamed(trial, "none") && !trial.place.fault->effect.contains("groupSignal");
    if (disturbed || trial.place.fault->kills) {
        return true;
    }
    const Told told = tell(trial);
    const std::vector<Problem>& problems = told.summary.problems;
    return std::all_of(problems.begin(), problems.end(),
                       [&trial](const Problem& problem) { return isOfMode(trial, problem); });
}

}  // namespace faults
