// What must hold of every run, whatever happens to it.
#pragma once

#include <map>
#include <string>

#include "cases.h"

namespace faults {

struct Run {
    e2e::Result result;
    // The package directory's files: name, and what changes when they do.
    std::map<std::string, std::string> before;
    std::map<std::string, std::string> after;
    nlohmann::json adaptersBefore;
    nlohmann::json adapters;
};

// Runs the program on the machine as it stands. No command that outlives it is waited for.
Run perform(const e2e::Texts& arguments);

struct Trial {
    Case place;
    const Run& reference;  // nothing happened to it
    Run first;             // the fault happened to it
    bool happened;
    Run second;      // the same again, with the fault lifted
    e2e::Json told;  // what zentrix-report makes of the first one's log
};

// The names of the broken rules, with commas; "-" when all hold.
std::string brokenRules(const Trial& trial);

// True when an update pass ended well and still left something undone.
bool isUnfinished(const Trial& trial);

}  // namespace faults
