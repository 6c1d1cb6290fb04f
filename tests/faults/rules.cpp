#include "rules.h"

#include <fcntl.h>
#include <unistd.h>

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

Run perform(const e2e::Texts& arguments, bool apart) {
    const std::string console = "/tmp/console";
    Run run;
    run.before = packageFiles();
    run.adaptersBefore = adaptersNow();
    run.result = e2e::run(arguments, [apart, &console] {
        // Whoever reads the console waits for all that can write to it.
        const int file = open(console.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0600);
        for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
            dup2(apart ? file : stream, stream);
        }
        close(file);
        for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE, SIGCHLD}) {
            signal(number, SIG_DFL);
        }
    });
    run.result.console += apart ? e2e::readFile(console) : "";
    run.after = packageFiles();
    run.adapters = adaptersNow();
    return run;
}

static bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

static bool faultHappened(const Trial& trial) {
    return trial.happened;
}

static bool runEnds(const Trial& trial) {
    return trial.first.result.status != e2e::neverEnded &&
           trial.second.result.status != e2e::neverEnded;
}

static bool statusIsKnown(const Trial& trial) {
    const int status = trial.first.result.status;
    if (trial.place.fault->kills) {
        return status == 128 + SIGKILL;
    }
    return status == fwup::exitClean || status == fwup::exitErrors ||
           status == fwup::exitNoDevices || status == fwup::exitAdapterDown;
}

struct LoggedFailure {
    const char* text;
    int status;
};

static const std::vector<LoggedFailure> failuresBeforePass = {
    {"***** REBOOT REQUIRED *****", fwup::exitErrors},
    {"Error! Cannot create temporary file \"q\".\n", fwup::exitErrors},
    {"Error! Unable to locate Kelvane Veltrasia II tool", fwup::exitNoDevices},
    {"Error! Unable to build Veltrasia II device list.\n", fwup::exitNoDevices},
    {"Error! Cannot create temporary file for Veltrasia II devices.\n", fwup::exitNoDevices},
    {"Warning. No Kelvane Veltrasia II adapters found.\n", fwup::exitNoDevices},
    {"Error! Failed to retrieve device driver information.", fwup::exitErrors},
};

static const std::vector<LoggedFailure> failuresInPass = {
    {"!!! Error performing VPDV0 check on device ", fwup::exitErrors},
    {", adapter is down !!!\n", fwup::exitAdapterDown},
    {" because the installed firmware is corrupted.", fwup::exitErrors},
    {" firmware on device ", fwup::exitErrors},
};

static int lastFailure(const std::string& log, const std::vector<LoggedFailure>& failures) {
    int status = fwup::exitClean;
    size_t last = 0;
    for (const LoggedFailure& failure : failures) {
        const size_t at = log.rfind(failure.text);
        if (at != std::string::npos && at >= last) {
            last = at;
            status = failure.status;
        }
    }
    return status;
}

static size_t passIn(const std::string& log) {
    return log.find("\nUpdating Kelvane Veltrasia II adapters.\n");
}

// What failed in the discovery after the pass does not count.
static int statusByLog(const std::string& log) {
    const size_t pass = passIn(log);
    return pass == std::string::npos ? lastFailure(log, failuresBeforePass)
                                     : lastFailure(log.substr(pass), failuresInPass);
}

// The log doesn't say how the run ended.
static bool endsUntold(const Trial& trial) {
    return trial.place.fault->losesLog || trial.place.fault->kills;
}

static bool statusAgreesWithLog(const Trial& trial) {
    return endsUntold(trial) || trial.first.result.status == statusByLog(trial.first.result.log);
}

static bool lastWordsAgreeWithStatus(const Trial& trial) {
    const e2e::Result& result = trial.first.result;
    const bool failed =
        result.status == fwup::exitNoDevices ||
        (passIn(result.log) != std::string::npos && result.status != fwup::exitClean);
    const bool done = trial.place.mode->updates && result.status == fwup::exitClean;
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

static bool noFilesLeft(const Trial& trial) {
    const e2e::Result& first = trial.first.result;
    if (trial.place.fault->kills) {
        return true;
    }
    for (const std::string& file : first.files) {
        if (!mayStay(file, first.log)) {
            return false;
        }
    }
    return true;
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
static bool knownFilesAreUntouched(const Run& run) {
    for (const auto& [name, content] : run.before) {
        const auto now = run.after.find(name);
        if (name != "lnxfwvt2" && (now == run.after.end() || now->second != content)) {
            return false;
        }
    }
    return true;
}

static bool packageIsUntouched(const Trial& trial) {
    return knownFilesAreUntouched(trial.first);
}

static bool secondRunFinishes(const Trial& trial) {
    return trial.second.result.status == trial.reference.result.status &&
           trial.second.adapters == trial.reference.adapters;
}

// What the first run may leave is removed only when its port has its turn again;
// once its adapter is updated through another port, it stays.
static bool secondRunCleansUp(const Trial& trial) {
    for (const auto& [name, content] : trial.second.after) {
        if (name.compare(0, 8, "kvlnfwup") != 0 && trial.reference.before.count(name) == 0 &&
            !mayStay(name, trial.first.result.log)) {
            return false;
        }
    }
    return true;
}

// Without a log nobody could tell afterwards, so the exit status has to.
static bool lostLogIsNoSuccess(const Trial& trial) {
    return !trial.place.fault->losesLog || !isUnfinished(trial);
}

static bool signalChangesNothing(const Trial& trial) {
    const Run& first = trial.first;
    const Run& reference = trial.reference;
    return std::string(trial.place.fault->name).compare(0, 3, "SIG") != 0 ||
           (first.result.log == reference.result.log &&
            first.result.console == reference.result.console &&
            first.adapters == reference.adapters);
}

static bool commandsDoNotOverlap(const Trial&) {
    return !overlapped();
}

static const struct {
    const char* name;
    bool (*holds)(const Trial&);
} rules[] = {
    {"fault-happened", faultHappened},
    {"run-ends", runEnds},
    {"status-known", statusIsKnown},
    {"status-by-log", statusAgreesWithLog},
    {"last-words", lastWordsAgreeWithStatus},
    {"files-left", noFilesLeft},
    {"one-command-at-a-time", commandsDoNotOverlap},
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
