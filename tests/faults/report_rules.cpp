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

static bool hasPort(const Adapter& adapter, const std::string& mac) {
    const Adapter& ports = adapter.at("ports");
    return std::any_of(ports.begin(), ports.end(),
                       [&mac](const Adapter& port) { return port.at("mac") == mac; });
}

// Null when there is none.
static Adapter adapterWith(const Adapter& adapters, const std::string& mac) {
    const auto found = std::find_if(adapters.begin(), adapters.end(),
                                    [&mac](const Adapter& one) { return hasPort(one, mac); });
    return found == adapters.end() ? Adapter() : *found;
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

static std::set<std::string> toldUpdates(const Trial& trial, const Adapter& adapter) {
    std::set<std::string> components;
    for (const Json& told : trial.told.at("adapters")) {
        for (const Json& flash : told.at("flashes")) {
            if (isDone(flash) && hasPort(adapter, flash.at("mac"))) {
                components.insert(flash.at("component"));
            }
        }
    }
    return components;
}

// What is told to be updated carries what it does when nothing happens, and all else what it did
// before, unless it comes along with another component.
static bool tellsFlashes(const Trial& trial) {
    const Adapter& before = trial.first.adaptersBefore;
    for (size_t i = 0; i < trial.first.adapters.size(); i++) {
        const Adapter& now = trial.first.adapters[i];
        const std::set<std::string> updated = toldUpdates(trial, now);
        for (const auto& [component, value] : now.at("components").items()) {
            const Adapter& right =
                (updated.count(component) == 1 ? trial.reference.adapters : before)[i];
            if (component != "fcode" && versionIn(now, component) != versionIn(right, component)) {
                return false;
            }
        }
    }
    return true;
}

static bool tellsStamps(const Trial& trial) {
    for (const Json& one : trial.told.at("adapters")) {
        const Json& written = one.at("stamp").at("written");
        const Adapter now = adapterWith(trial.first.adapters, one.at("ports").front().at("mac"));
        if (!written.is_null() && now.value("vpd", Adapter()).value("V0", "") != written) {
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
        const Adapter now = adapterWith(trial.first.adapters, one.at("mac"));
        const Adapter& value = now.at("components").at(component);
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
    const e2e::Texts words(ofPort ? struck.begin() + 2 : struck.end(), struck.end());
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
           hasPort(adapter, problem.at("mac"));
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
