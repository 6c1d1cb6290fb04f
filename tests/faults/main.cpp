// Runs the program once for every case, and checks what must hold whatever
// happens. One line a case: its name, the broken rules or "-", and "unfinished"
// where an update that ended well left something undone, or "-".
//
//   fault_runs [--mode M] [--fault F] [--only CASE] [--shard I --shards N]
//
// Works only inside script/sandbox. script/faults calls it and counts.
#include <cstdio>
#include <stdexcept>

#include "follow.h"
#include "report_rules.h"
#include "rules.h"

namespace faults {

using Options = std::map<std::string, std::string>;

struct Reference {
    Run run;
    std::map<Places, unsigned> places;
    nlohmann::json goal;  // of all who follow the steps
};

static Options parse(int argc, char** argv) {
    Options options = {{"--mode", ""},   {"--fault", ""},   {"--only", ""},
                       {"--shard", "0"}, {"--shards", "1"}, {"--follow", ""}};
    for (int i = 1; i + 1 < argc; i += 2) {
        options.at(argv[i]) = argv[i + 1];
    }
    return options;
}

static bool isWanted(const std::string& wanted, const std::string& name) {
    return wanted.empty() || wanted == name;
}

// Where room is short, the last place is one that has enough.
static Reference undisturbed(const Mode& mode, bool follows) {
    makeMachine(mode);
    startCounting();
    Run run = perform(mode.arguments);
    const auto logPages = static_cast<unsigned>(run.result.log.size() / pageSize) + 2;
    std::map<Places, unsigned> places = {{Places::once, 1},
                                         {Places::updates, mode.updates ? 1 : 0},
                                         {Places::commands, countOf(Places::commands)},
                                         {Places::calls, countOf(Places::calls)},
                                         {Places::logPages, logPages},
                                         {Places::files, 15}};
    return {std::move(run), std::move(places), follows ? followUndisturbed(mode) : nullptr};
}

// What strikes commands or calls may do so again and again, if the steps are followed.
static std::vector<Case> casesOf(const Mode& mode, const Reference& reference, bool follows) {
    std::vector<Case> cases;
    for (const Fault& fault : allFaults) {
        const bool canStick = follows && !fault.effect.is_null();
        for (unsigned place = 1; place <= reference.places.at(fault.places); place++) {
            cases.push_back({&mode, &fault, place});
            if (canStick) {
                cases.push_back({&mode, &fault, place, true});
            }
        }
    }
    return cases;
}

static void showDetails(const Trial& trial) {
    const e2e::Result& first = trial.first.result;
    const auto lacks = nlohmann::json::diff(trial.second.adapters, trial.reference.adapters);
    fprintf(stderr, "==== First run, exit status %d. Console:\n%s==== Its log:\n%s", first.status,
            first.console.c_str(), first.log.c_str());
    fprintf(stderr, "==== Second run, exit status %d. What its adapters lack:\n%s\n",
            trial.second.result.status, lacks.dump(1).c_str());
}

// A run from adapters that another first run left just so, and no file with
// them, has been seen before.
static Run runAgain(const Case& c, const Run& first, std::map<std::string, Run>& seen) {
    if (hasTrait(c, lingers) || !first.result.files.empty() ||
        first.result.logPath.compare(0, 1, "/") != 0) {
        return perform(c.mode->arguments);
    }
    const std::string adapters = first.adapters.dump();
    auto known = seen.find(adapters);
    if (known == seen.end()) {
        known = seen.emplace(adapters, perform(c.mode->arguments)).first;
    }
    return known->second;
}

static Trial tryOut(const Case& c, const Run& reference, std::map<std::string, Run>& seen) {
    makeMachine(*c.mode);
    applyFault(c);
    Run first = perform(c.mode->arguments);
    const bool happened = faultHappened(c);
    // What goes on would bring back what it has read.
    if (!hasTrait(c, lingers)) {
        liftFaults();
    }
    Run second = runAgain(c, first, seen);
    e2e::Json told = tell(first.result.log);
    return {c, reference, std::move(first), happened, std::move(second), std::move(told)};
}

static void runCase(const Options& options, const Case& c, const Reference& reference,
                    std::map<std::string, Run>& seen) {
    const bool shown = !options.at("--only").empty();
    if (!options.at("--follow").empty()) {
        const Ending ending = follow(c, reference.goal, shown);
        printf("%s %s %s\n", nameOf(c).c_str(), ending.broken.c_str(), ending.how.c_str());
    } else {
        const Trial trial = tryOut(c, reference.run, seen);
        if (shown) {
            showDetails(trial);
        }
        printf("%s %s %s\n", nameOf(c).c_str(), brokenRules(trial).c_str(),
               isUnfinished(trial) ? "unfinished" : "-");
    }
    fflush(stdout);
}

// `number` counts on through all modes, so that the shards share the cases.
static void runMode(const Options& options, const Mode& mode, unsigned long& number) {
    const bool follows = !options.at("--follow").empty();
    const Reference reference = undisturbed(mode, follows);
    std::map<std::string, Run> seen;
    const unsigned long shard = std::stoul(options.at("--shard"));
    const unsigned long shards = std::stoul(options.at("--shards"));
    for (const Case& c : casesOf(mode, reference, follows)) {
        if (isWanted(options.at("--fault"), c.fault->name) &&
            isWanted(options.at("--only"), nameOf(c)) && number++ % shards == shard) {
            runCase(options, c, reference, seen);
        }
    }
}

static void runModes(const Options& options) {
    const std::string& only = options.at("--only");
    unsigned long number = 0;
    for (const Mode& mode : modes) {
        if (isWanted(options.at("--mode"), mode.name) &&
            isWanted(only.substr(0, only.find('/')), mode.name)) {
            runMode(options, mode, number);
        }
    }
}

}  // namespace faults

int main(int argc, char** argv) {
    if (!e2e::isSandboxed()) {
        return 1;
    }
    try {
        faults::runModes(faults::parse(argc, argv));
    } catch (const std::exception& error) {
        fprintf(stderr, "fault_runs: %s\n", error.what());
        return 1;
    }
    return 0;
}
