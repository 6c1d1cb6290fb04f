// The parts of a summary, in the order in which they are made.
#pragma once

#include <string>
#include <vector>

#include "summary.h"

namespace report {

template <typename Value>
void addOnce(std::vector<Value>& values, const Value& value) {
    for (const Value& known : values) {
        if (known == value) {
            return;
        }
    }
    values.push_back(value);
}

// A version, or the driver's, that isn't there.
bool isAbsent(const std::string& version);

// The ports by their buses, with all that was done to them.
void addAdapters(const Run& run, Summary& summary);

// Null when no adapter has the port.
AdapterSummary* adapterOf(Summary& summary, const std::string& mac);

// What the problems ask for.
struct Tasks {
    unsigned actions = actNothing;
    bool failed = false;  // something went wrong, whatever the exit status says
    std::vector<std::string> errands = {};
    std::vector<std::string> downMacs = {};
    std::vector<std::string> supportMacs = {};
};

Tasks addProblems(const Run& run, Summary& summary);

// Takes `outcome` and `rebootNeeded` from the summary.
void addNext(const Run& run, const Tasks& tasks, Summary& summary);

// Where the same trouble has come again after the next step, support takes its place.
void heedHistory(const Run& run, Summary& summary, History& history);

}  // namespace report
