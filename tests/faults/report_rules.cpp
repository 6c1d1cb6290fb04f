#include "report_rules.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <sstream>

#include "data.h"
#include "input.h"

namespace faults {

using e2e::Json;
using Adapter = nlohmann::json;
using Names = std::initializer_list<const char*>;

Json tell(const std::string& log, report::History* history) {
    const std::string path = "/tmp/told.log";
    e2e::writeFile(path, log);
    report::Run run;
    std::string trouble;
    if (report::readLog(path, run, trouble)) {
        return report::toData(path, run, report::summarize(run, history));
    }
    Json refused = report::toData(path, run, {});
    refused["outcome"] = "refused";
    return refused;
}

static bool isAmong(Names names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

e2e::Texts wordsOf(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

// The words of the utility's command that the fault struck; none when it was no command.
static e2e::Texts struckCommand(const Case& place, const Run& run) {
    unsigned number = 0;
    for (const std::string& command : run.result.commands) {
        e2e::Texts words = wordsOf(command);
        if (words.front() == "./lnxfwvt2" && ++number == place.place) {
            return words;
        }
    }
    return {};
}

static bool has(const e2e::Texts& words, const std::string& word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

// --- Status and cut

bool reportTellsStatus(const Trial& trial) {
    const Json& status = trial.told.at("exitStatus");
    // A log whose end was lost looks like that of a killed run.
    const bool mayLack = hasTrait(trial.place, kills | losesLog);
    return status.is_null() ? mayLack : status == trial.first.result.status;
}

bool reportTellsCut(const Trial& trial) {
    const bool cut = trial.told.at("outcome") == "cut-off";
    if (!hasTrait(trial.place, kills)) {
        return !cut || hasTrait(trial.place, losesLog);
    }
    const e2e::Texts& commands = trial.first.result.commands;
    const Json& last = trial.told.at("problems").back();
    return cut && !commands.empty() && last.at("kind") == "no-end" &&
           wordsOf(last.at("text")) == wordsOf("About to execute: \"" + commands.back() + "\"");
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
    const Adapter value = adapter.at("components").value(component, Adapter());
    return value.is_object() ? value.at("version") : value.is_null() ? "" : value;
}

static bool isDone(const Json& work) {
    return isAmong({"updated", "updated-reboot-needed", "done", "done-reboot-needed"},
                   work.at("outcome"));
}

// A component of an adapter, told or true.
using Place = std::pair<const Adapter*, std::string>;

// What comes along with another component is not told.
static bool tellsAllFlashes(const Trial& trial, const std::set<Place>& told) {
    for (size_t i = 0; i < trial.first.adapters.size(); i++) {
        const Adapter& now = trial.first.adapters[i];
        for (const auto& [component, value] : now.at("components").items()) {
            if (component != "fcode" && told.count({&now, component}) == 0 &&
                versionIn(now, component) != versionIn(trial.first.adaptersBefore[i], component)) {
                return false;
            }
        }
    }
    return true;
}

// What is told to be updated carries what it does when nothing happens.
static bool tellsFlashes(const Trial& trial) {
    std::set<Place> told;
    for (const Json& adapter : trial.told.at("adapters")) {
        for (const Json& flash : adapter.at("flashes")) {
            const Adapter* now = adapterWith(trial.first.adapters, flash.at("mac"));
            const Adapter* right = adapterWith(trial.reference.adapters, flash.at("mac"));
            const std::string component = flash.at("component");
            if (now == nullptr ||
                (isDone(flash) && versionIn(*now, component) != versionIn(*right, component))) {
                return false;
            }
            if (isDone(flash)) {
                told.emplace(now, component);
            }
        }
    }
    return tellsAllFlashes(trial, told);
}

static bool tellsStamps(const Trial& trial) {
    for (const Json& one : trial.told.at("adapters")) {
        const Json& written = one.at("stamp").at("written");
        const Adapter* now = adapterWith(trial.first.adapters, one.at("ports").front().at("mac"));
        if (!written.is_null() && (now == nullptr || !now->contains("vpd") ||
                                   now->at("vpd").value("V0", "") != written)) {
            return false;
        }
    }
    return true;
}

static bool tellsSwitches(const Trial& trial) {
    const bool enables = trial.told.at("operation") == "enable-ncsi";
    for (const Json& one : trial.told.at("switches")) {
        std::string component = one.at("firmware");
        std::transform(component.begin(), component.end(), component.begin(), ::tolower);
        const Adapter* now = adapterWith(trial.first.adapters, one.at("mac"));
        if (now == nullptr) {
            return false;
        }
        const Adapter& value = now->at("components").at(component);
        const bool enabled = !value.is_object() || value.value("enabled", true);
        if (isDone(one) && enabled != enables) {
            return false;
        }
    }
    return true;
}

// A utility that lies about what it did is believed.
bool reportTellsAdapters(const Trial& trial) {
    return hasTrait(trial.place, losesLog) || isAmong({"exit-0"}, trial.place.fault->name) ||
           (tellsFlashes(trial) && tellsStamps(trial) && tellsSwitches(trial));
}

// --- Problems

// How a command of the utility that fails must be named, by the words behind the MAC. The first row
// that fits counts.
static const struct {
    e2e::Texts words;
    Names kinds;
} failures[] = {
    {{"upgrade"}, {"flash-failed", "not-accepted"}},
    {{"crc"}, {"crc-failed"}},
    {{"cfg", "-show", "vpdv0"}, {"stamp-check-failed"}},
    {{"cfg", "-show", "vpdyb"}, {"not-read"}},
    {{"cfg", "-noreset", "-vpdv0"}, {"stamp-failed"}},
    {{"cfg", "-vpdyb"}, {"yb-failed"}},
    {{"cfg"}, {"switch-failed"}},
    {{"dir", "-delete"}, {"block-not-removed"}},
    {{"dir"}, {"not-read"}},
    {{}, {"no-adapters", "not-read"}},
};

static bool hasProblem(const Trial& trial, Names kinds, const Json& mac) {
    const Json& problems = trial.told.at("problems");
    return std::any_of(problems.begin(), problems.end(), [&](const Json& problem) {
        return isAmong(kinds, problem.at("kind")) && problem.at("mac") == mac;
    });
}

static bool namesStruckCommand(const Trial& trial) {
    const e2e::Texts struck = struckCommand(trial.place, trial.first);
    const std::string fault = trial.place.fault->name;
    if (!isAmong({"exit-1", "exit-unknown", "exit-70", "exit-35", "killed"}, fault) ||
        (fault == "exit-35" && has(struck, "upgrade"))) {
        return true;
    }
    const bool ofPort = struck.at(1).front() != '<';
    const e2e::Texts words(struck.begin() + (ofPort ? 2 : struck.size()), struck.end());
    for (const auto& failure : failures) {
        if (failure.words.size() <= words.size() &&
            std::equal(failure.words.begin(), failure.words.end(), words.begin())) {
            return hasProblem(trial, failure.kinds, ofPort ? Json(struck[1]) : Json());
        }
    }
    return false;
}

// What ends a pass, or comes before it, leaves adapters untouched that it doesn't
// name.
static bool concerns(const Json& problem, const Adapter& adapter) {
    return problem.at("mac").is_null() ||
           isAmong({"stamp-check-failed", "no-end", "no-build-version"}, problem.at("kind")) ||
           adapterWith(Adapter::array({adapter}), problem.at("mac")) != nullptr;
}

bool isTold(const Json& problems, const Adapter& adapter) {
    return std::any_of(problems.begin(), problems.end(),
                       [&](const Json& problem) { return concerns(problem, adapter); });
}

// A directory stands in no log of the modes that switch.
bool isUntold(const Case& place, const Run& run) {
    const e2e::Texts struck = struckCommand(place, run);
    const bool lies = isAmong({"exit-0"}, place.fault->name);
    const bool garbles = lies || place.fault->effect.contains("output");
    return (isAmong({"-nomfw", "-ncsienable", "-ncsidisable"}, place.mode->name) && garbles &&
            has(struck, "dir")) ||
           (lies && (has(struck, "cfg") || has(struck, "-delete"))) ||
           (isAmong({"exit-35"}, place.fault->name) && has(struck, "upgrade"));
}

static bool namesEveryAdapterLeft(const Trial& trial) {
    const bool canOnlyRemark = isAmong({"exit-0"}, trial.place.fault->name);
    for (size_t i = 0; i < trial.first.adapters.size(); i++) {
        const Adapter& adapter = trial.first.adapters[i];
        if (adapter != trial.reference.adapters[i] && !isTold(trial.told.at("problems"), adapter) &&
            !(canOnlyRemark && isTold(trial.told.at("remarks"), adapter))) {
            return isUntold(trial.place, trial.first);
        }
    }
    return true;
}

bool reportTellsProblems(const Trial& trial) {
    return hasTrait(trial.place, losesLog) ||
           (namesStruckCommand(trial) && namesEveryAdapterLeft(trial));
}

// Only the first adapter of the mode that has one is down, and one of the rack's
// has no second iSCSI block to remove.
bool reportRaisesNoAlarm(const Trial& trial) {
    const Case& place = trial.place;
    const bool disturbed = !isAmong({"none", "up-to-date"}, place.fault->name) &&
                           !place.fault->effect.contains("groupSignal");
    const Json& problems = trial.told.at("problems");
    return disturbed || hasTrait(place, kills) ||
           std::all_of(problems.begin(), problems.end(), [&place](const Json& problem) {
               return problem.at("kind") == place.mode->problem;
           });
}

}  // namespace faults
