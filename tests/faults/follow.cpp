#include "follow.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <sstream>

#include "report_rules.h"

namespace faults {

namespace fs = std::filesystem;
using report::Step;
using report::StepCode;

constexpr unsigned roundLimit = 2;

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
    e2e::Json adapters = e2e::readAdapters();
    for (e2e::Json& adapter : adapters["adapters"]) {
        for (e2e::Json& port : adapter["ports"]) {
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
    std::istringstream words(text);
    std::string word;
    while (words >> word) {
        word.erase(word.find_last_not_of(".,") + 1);
        if (word == "./zentrix") {
            runs.emplace_back();
        } else if (!runs.empty() && word[0] == '-') {
            runs.back().push_back(word);
        }
    }
    return runs;
}

// The options of the run that a step asks for after one with these.
static e2e::Texts optionsFor(const Step& step, const e2e::Texts& before) {
    const std::vector<e2e::Texts> runs = runsNamed(step.command.empty() ? step.text : step.command);
    const bool isNamed = std::find(runs.begin(), runs.end(), before) != runs.end();
    return runs.empty() || isNamed ? before : runs.front();
}

struct Progress {
    const Case& place;
    e2e::Texts options;  // of the last run
    Run last;
    unsigned rounds = 0;
    bool shown = false;
};

static void obey(Progress& progress, const Step& step) {
    switch (step.code) {
        case StepCode::checkNothingRuns: waitUntilNothingRuns(); break;
        case StepCode::mend: mend(progress.place, step.text); break;
        case StepCode::loadDriver: loadDrivers(); break;
        case StepCode::run:
            progress.options = optionsFor(step, progress.options);
            progress.last = perform(progress.options, progress.place.fault->lingers);
            progress.rounds++;
            break;
        case StepCode::stayUp:
        case StepCode::support:
        case StepCode::reboot:  // virtual adapters need none for what they were told
            break;
    }
}

static bool asksFor(const std::vector<Step>& steps, StepCode code) {
    return std::any_of(steps.begin(), steps.end(),
                       [code](const Step& step) { return step.code == code; });
}

// Where the steps end before the job is done, a remark must tell, if anything can.
static Ending judge(const Progress& progress, const Told& told, const nlohmann::json& goal) {
    Ending ending = {"-", "-"};
    for (size_t i = 0; i < goal.size(); i++) {
        const nlohmann::json& adapter = progress.last.adapters[i];
        if (adapter != goal[i] && isTold(told.summary.remarks, adapter)) {
            ending.how = "remark";
        } else if (adapter != goal[i]) {
            return {isUntold(progress.place, progress.last) ? "-" : "left-behind", "untold"};
        }
    }
    return ending;
}

static void show(const Progress& progress, const std::vector<Step>& steps) {
    fprintf(stderr, "==== A log:\n%s==== What to do after it:\n", progress.last.result.log.c_str());
    for (const Step& step : steps) {
        fprintf(stderr, "%s\n", step.text.c_str());
    }
}

static Ending followSteps(Progress& progress, const nlohmann::json& goal) {
    report::History history;
    for (;;) {
        const Told told = tell(progress.last.result.log, &history);
        const std::vector<Step>& steps = told.summary.next;
        if (progress.shown) {
            show(progress, steps);
        }
        if (!told.isRead) {
            return {progress.last.result.status == 0 ? "no-log" : "-", "untold"};
        }
        if (told.summary.outcome == report::Outcome::cutOff &&
            (steps.empty() || steps.front().code != StepCode::checkNothingRuns)) {
            return {"joins-a-run", "-"};
        }
        if (asksFor(steps, StepCode::support)) {
            return {"-", "support"};
        }
        const bool runs = asksFor(steps, StepCode::run);
        if (runs && progress.rounds == roundLimit) {
            return {"goes-round", "-"};
        }
        for (const Step& step : steps) {
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
    return {c, c.mode->arguments, perform(c.mode->arguments, c.fault->lingers)};
}

nlohmann::json followUndisturbed(const Mode& mode) {
    const Case undisturbed = {&mode, &allFaults.front(), 1};
    Progress progress = begin(undisturbed);
    followSteps(progress, nlohmann::json::array());
    return progress.last.adapters;
}

Ending follow(const Case& c, const nlohmann::json& goal, bool shown) {
    Progress progress = begin(c);
    progress.shown = shown;
    Ending ending = followSteps(progress, goal);
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
