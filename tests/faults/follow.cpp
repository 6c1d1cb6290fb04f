#include "follow.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <regex>

#include "report_rules.h"

namespace faults {

namespace fs = std::filesystem;
using e2e::Json;

constexpr unsigned roundLimit = 2;

struct Progress {
    Case place;
    e2e::Texts options;  // of the last run
    Run last;
    bool untold;  // the log of the first run can't tell what is left
    unsigned rounds = 0;
};

static void waitUntilNothingRuns() {
    const auto isOurs = [](const fs::directory_entry& process) {
        const std::string name = e2e::readFile(process.path() / "comm");
        return name == "zentrix\n" || name == "lnxfwvt2\n";
    };
    while (std::any_of(fs::directory_iterator("/proc"), fs::directory_iterator(), isOurs)) {
        usleep(10000);
    }
}

static void loadDrivers() {
    Json adapters = e2e::readAdapters();
    for (Json& adapter : adapters["adapters"]) {
        for (Json& port : adapter["ports"]) {
            port["driver"] = port["driver"].is_null() ? "2.1.6" : port["driver"];
        }
    }
    e2e::writeAdapters(adapters);
}

// What is to be mended is what the fault is about, or nothing can be done about it here.
static void mend(const Case& c, const std::string& text) {
    if (c.fault->mended != nullptr && std::regex_search(text, std::regex(c.fault->mended))) {
        liftFaults();
    }
}

// The options of each "./zentrix" in a text.
static std::vector<e2e::Texts> runsNamed(const std::string& text) {
    std::vector<e2e::Texts> runs;
    for (std::string word : wordsOf(text)) {
        word.erase(word.find_last_not_of(".,") + 1);
        if (word == "./zentrix") {
            runs.emplace_back();
        } else if (!runs.empty() && word[0] == '-') {
            runs.back().push_back(word);
        }
    }
    return runs;
}

// A run whose options the step doesn't tell is repeated with those that it had.
static void run(Progress& progress, const Json& step) {
    const auto runs = runsNamed(step.at(step.at("command").is_null() ? "text" : "command"));
    if (!runs.empty() && std::find(runs.begin(), runs.end(), progress.options) == runs.end()) {
        progress.options = runs.front();
    }
    progress.last = perform(progress.options);
    progress.rounds++;
}

// The other steps are done by doing nothing here: virtual adapters need no reboot for what they
// were told.
static void obey(Progress& progress, const Json& step) {
    const std::string code = step.at("code");
    if (code == "check-nothing-runs") {
        waitUntilNothingRuns();
    } else if (code == "mend") {
        mend(progress.place, step.at("text"));
    } else if (code == "load-driver") {
        loadDrivers();
    } else if (code == "run") {
        run(progress, step);
    }
}

static bool asksFor(const Json& next, const char* code) {
    return std::any_of(next.begin(), next.end(),
                       [code](const Json& step) { return step.at("code") == code; });
}

// Where the steps end before the job is done, a remark must tell, if anything can.
static Ending judge(const Progress& progress, const Json& told, const nlohmann::json& goal) {
    Ending ending = {"-", "-"};
    for (size_t i = 0; i < goal.size(); i++) {
        const nlohmann::json& adapter = progress.last.adapters[i];
        if (adapter != goal[i] && isTold(told.at("remarks"), adapter)) {
            ending.how = "remark";
        } else if (adapter != goal[i]) {
            return {progress.untold ? "-" : "left-behind", "untold"};
        }
    }
    return ending;
}

static Ending judgeLost(const Progress& progress, const nlohmann::json& goal) {
    const bool claimsAll = progress.place.mode->updates && progress.last.result.status == 0;
    return {claimsAll && progress.last.adapters != goal ? "no-log" : "-", "untold"};
}

static Ending followSteps(Progress& progress, const nlohmann::json& goal, bool shown) {
    report::History history;
    for (;;) {
        const std::string& log = progress.last.result.log;
        const Json told = tell(log, &history);
        const Json& next = told.at("next");
        if (shown) {
            fprintf(stderr, "==== A log:\n%s==== What to do after it: %s\n", log.c_str(),
                    next.dump(1).c_str());
        }
        if (told.at("outcome") == "refused") {
            return judgeLost(progress, goal);
        }
        if (told.at("outcome") == "cut-off" &&
            (next.empty() || next.front().at("code") != "check-nothing-runs")) {
            return {"joins-a-run", "-"};
        }
        if (asksFor(next, "support")) {
            return {"-", "support"};
        }
        const bool runs = asksFor(next, "run");
        if (runs && progress.rounds == roundLimit) {
            return {"goes-round", "-"};
        }
        for (const Json& step : next) {
            obey(progress, step);
        }
        if (!runs) {
            return judge(progress, told, goal);
        }
    }
}

static Progress begin(const Case& c) {
    makeMachine(*c.mode);
    applyFault(c);
    Run first = perform(c.mode->arguments);
    const bool untold = isUntold(c, first);
    return {c, c.mode->arguments, std::move(first), untold};
}

nlohmann::json followUndisturbed(const Mode& mode) {
    Progress progress = begin({&mode, &allFaults.front(), 1});
    followSteps(progress, nlohmann::json::array(), false);
    return progress.last.adapters;
}

Ending follow(const Case& c, const nlohmann::json& goal, bool shown) {
    Progress progress = begin(c);
    Ending ending = followSteps(progress, goal, shown);
    waitUntilNothingRuns();
    if (ending.how == "support" && c.fault == &allFaults.front()) {
        ending.broken = "needs-no-support";
    }
    if (overlapped()) {
        ending.broken = "one-command-at-a-time";
    }
    liftFaults();
    return ending;
}

}  // namespace faults
