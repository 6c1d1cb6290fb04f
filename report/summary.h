// What a run comes to: its adapters, its problems with their advice, its
// outcome, and what is left to do.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "advice.h"
#include "run.h"

namespace report {

struct PortSummary {
    std::string mac;
    std::optional<std::string> label;
    std::optional<int> device;
    std::optional<int> function;
    std::optional<std::string> driver;
    bool down = false;
    bool corrupted = false;
    const Port* before = nullptr;  // into the run; null where no table has it
    const Port* after = nullptr;
};

struct AdapterSummary {
    std::optional<int> bus;
    std::vector<PortSummary> ports;
    std::optional<std::string> stampBefore;
    std::optional<std::string> stampWritten;
    std::vector<const Flash*> flashes;
    std::vector<const Visit*> checks;  // whose CRC was checked
    YbOutcome yb = YbOutcome::none;
};

struct Problem {
    size_t line = 0;  // 0 for none
    std::string text;
    std::string cause;
    std::string adapters;
    std::string next;
    LineKind kind = LineKind::unknown;
};

enum class Outcome { clean, failed, adapterDown, noAdapters, rebootFirst, usageError, cutOff };

struct Summary {
    Outcome outcome = Outcome::clean;
    bool dryRun = false;
    bool rebootNeeded = false;
    std::optional<std::string> buildVersion;
    std::vector<AdapterSummary> adapters;
    std::vector<Problem> problems;
    std::vector<std::string> next;
};

// The summary points into `run`, which must outlive it.
Summary summarize(const Run& run);

}  // namespace report
