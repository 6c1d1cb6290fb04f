#include "rules.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>

#include "report_rules.h"
#include "update/exit_status.h"

namespace faults {

namespace fs = std::filesystem;

static std::map<std::string, std::string> packageFiles() {
    std::map<std::string, std::string> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(e2e::packageDirectory)) {
        files[entry.path().filename()] =
            entry.is_symlink()
                ? fs::read_symlink(entry).string()
                : std::to_string(entry.file_size()) + " bytes of " +
                      std::to_string(entry.last_write_time().time_since_epoch().count());
    }
    return files;
}

// Without the order of keys, which depends on what was written first.
static nlohmann::json adaptersNow() {
    return nlohmann::json::parse(e2e::readAdapters().at("adapters").dump());
}

Run perform(const e2e::Texts& arguments) {
    const std::string console = "/tmp/console";
    e2e::writeFile(console, "");
    Run run;
    run.before = packageFiles();
    run.adaptersBefore = adaptersNow();
    run.result = e2e::run(arguments, [&console] {
        // Whoever reads a pipe waits for all that can write to it.
        const int file = open(console.c_str(), O_WRONLY | O_APPEND);
        dup2(file, STDOUT_FILENO);
        dup2(file, STDERR_FILENO);
        close(file);
        for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE, SIGCHLD}) {
            signal(number, SIG_DFL);
        }
    });
    run.result.console = e2e::readFile(console);
    run.after = packageFiles();
    run.adapters = adaptersNow();
    return run;
}

static bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

static bool statusIsKnown(const Trial& trial) {
    const int status = trial.first.result.status;
    if (hasTrait(trial.place, kills)) {
        return status == 128 + SIGKILL;
    }
    return status == fwup::exitClean || status == fwup::exitErrors ||
           status == fwup::exitNoDevices || status == fwup::exitAdapterDown;
}

// The log doesn't say how the run ended.
static bool endsUntold(const Trial& trial) {
    return hasTrait(trial.place, losesLog | kills);
}

static bool lastWordsAgreeWithStatus(const Trial& trial) {
    const e2e::Result& result = trial.first.result;
    const bool bad = result.status != fwup::exitClean;
    const bool inPass = contains(result.log, "\nUpdating Kelvane Veltrasia II adapters.\n");
    const bool failed = result.status == fwup::exitNoDevices || (inPass && bad);
    const bool done = trial.place.mode->updates && !bad;
    return endsUntold(trial) ||
           (contains(result.log, "\n\nOne or more errors occurred during ") == failed &&
            contains(result.log, "\n\nUpdate complete. ") == done);
}

// A failed read of the stamp leaves what was read.
static bool mayStay(const std::string& file, const std::string& log) {
    const size_t mac = file.find("_VPD_V0_Data1.log");
    return mac != std::string::npos &&
           contains(log, "Error performing VPDV0 check on device " + file.substr(0, mac) + " ");
}

static bool leavesNoFiles(const Run& run, const Run& before, const Trial& trial) {
    return std::all_of(run.after.begin(), run.after.end(), [&](const auto& file) {
        return file.first.rfind("kvlnfwup", 0) == 0 || before.before.count(file.first) != 0 ||
               mayStay(file.first, trial.first.result.log);
    });
}

static bool noFilesLeft(const Trial& trial) {
    return hasTrait(trial.place, kills) || leavesNoFiles(trial.first, trial.first, trial);
}

// What the first run may leave is removed only when its port has its turn again;
// once its adapter is updated through another port, it stays.
static bool secondRunCleansUp(const Trial& trial) {
    return leavesNoFiles(trial.second, trial.reference, trial);
}

static bool everyCommandHasItsOutcome(const e2e::Result& result) {
    size_t at = 0;
    for (const std::string& command : result.commands) {
        if (e2e::takeOutcome(result.log, command, at).empty()) {
            return false;
        }
    }
    return true;
}

static bool logIsWhole(const Trial& trial) {
    return (endsUntold(trial) || everyCommandHasItsOutcome(trial.first.result)) &&
           everyCommandHasItsOutcome(trial.second.result);
}

// New files are another rule's business; a utility that went is no surprise.
static bool packageIsUntouched(const Trial& trial) {
    const Run& run = trial.first;
    for (const auto& [name, content] : run.before) {
        const auto now = run.after.find(name);
        if (name != "lnxfwvt2" && (now == run.after.end() || now->second != content)) {
            return false;
        }
    }
    return true;
}

static bool secondRunFinishes(const Trial& trial) {
    return trial.second.result.status == trial.reference.result.status &&
           trial.second.adapters == trial.reference.adapters;
}

// Without a log nobody could tell afterwards, so the exit status has to.
static bool lostLogIsNoSuccess(const Trial& trial) {
    return !hasTrait(trial.place, losesLog) || !isUnfinished(trial);
}

static bool signalChangesNothing(const Trial& trial) {
    const Run& first = trial.first;
    const Run& reference = trial.reference;
    return std::string(trial.place.fault->name).compare(0, 3, "SIG") != 0 ||
           (first.result.log == reference.result.log &&
            first.result.console == reference.result.console &&
            first.adapters == reference.adapters);
}

static const struct {
    const char* name;
    bool (*holds)(const Trial&);
} rules[] = {
    {"fault-happened", [](const Trial& trial) { return trial.happened; }},
    {"status-known", statusIsKnown},
    {"last-words", lastWordsAgreeWithStatus},
    {"files-left", noFilesLeft},
    {"one-command-at-a-time", [](const Trial&) { return !overlapped(); }},
    {"log-whole", logIsWhole},
    {"package-untouched", packageIsUntouched},
    {"second-run-finishes", secondRunFinishes},
    {"second-run-cleans-up", secondRunCleansUp},
    {"lost-log-is-no-success", lostLogIsNoSuccess},
    {"signal-changes-nothing", signalChangesNothing},
    {"report-status", reportTellsStatus},
    {"report-cut", reportTellsCut},
    {"report-adapters", reportTellsAdapters},
    {"report-problems", reportTellsProblems},
    {"report-no-alarm", reportRaisesNoAlarm},
};

std::string brokenRules(const Trial& trial) {
    std::string broken;
    for (const auto& rule : rules) {
        if (!rule.holds(trial)) {
            broken += (broken.empty() ? "" : ",") + std::string(rule.name);
        }
    }
    return broken.empty() ? "-" : broken;
}

bool isUnfinished(const Trial& trial) {
    return trial.place.mode->updates && trial.first.result.status == fwup::exitClean &&
           trial.first.adapters != trial.reference.adapters;
}

}  // namespace faults
