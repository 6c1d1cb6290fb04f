// What a run comes to: its adapters, its problems with their advice, its
// outcome, and what is left to do.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "run.h"

namespace report {

// What is known of a port: pointers into the run, null where it tells nothing of it.
struct PortSummary {
    std::string mac;
    const Port* before = nullptr;
    const Port* after = nullptr;
    const Visit* visit = nullptr;  // its last
};

struct AdapterSummary {
    std::optional<int> bus;
    std::vector<PortSummary> ports;
    std::vector<const Visit*> visits;
    std::vector<const Flash*> flashes;
};

// No driver, as the tool or the library says.
bool isDown(const PortSummary& port);

std::optional<std::string> stampBefore(const AdapterSummary& adapter);
std::optional<std::string> stampWritten(const AdapterSummary& adapter);
YbOutcome ybOf(const AdapterSummary& adapter);

struct Problem {
    std::string kind;       // a stable word
    std::string mac;        // empty when it is about no single port
    std::string component;  // empty when it is about none
    size_t line = 0;        // 0 when no single line shows it
    std::string text;
    std::string cause;
    std::string adapters;
    std::string next;
};

// What is to be done, in the order of a report.
enum class StepCode { checkNothingRuns, stayUp, support, mend, loadDriver, reboot, run };

struct Step {
    StepCode code = StepCode::mend;
    std::string text;
    // Of a run: "./zentrix" with its options, to be run as it stands. Empty where the log doesn't
    // tell which run it was: then the option that it was run with is the one to repeat, and where
    // `text` names some, from "./zentrix" on, and that isn't among them, the first of these.
    std::string command = {};
};

enum class Outcome {
    clean,
    failed,
    adapterDown,
    noAdapters,
    rebootFirst,
    usageError,
    cutOff,
    headingAlone
};

struct Summary {
    Outcome outcome = Outcome::clean;
    bool rebootNeeded = false;
    std::optional<std::string> buildVersion;
    std::vector<AdapterSummary> adapters;
    std::vector<Problem> problems;
    std::vector<Problem> remarks;  // what to know; they make no run a failed one
    std::vector<Step> next;        // empty when nothing is left to do
};

// What an earlier run came to.
struct Past {
    std::vector<std::string> macs;
    Operation operation = Operation::none;
    std::vector<std::string> troubles;
    std::vector<Step> next;
    std::string cutIn;  // the command during which its log ends; may be empty
};

// Runs in their order, of one server or of several, which are told apart by their ports. All that
// list none are taken for one server's.
using History = std::vector<Past>;

// The summary points into `run`, which must outlive it. Where the run was the next step
// of an earlier one and the same trouble came again, or it was cut off in the same command,
// the next step is support. The run is added to the history.
Summary summarize(const Run& run, History* history = nullptr);

}  // namespace report
