// A server's ports as the logs of its runs tell of them.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "run.h"

namespace emulator {

struct ToldPort {
    std::string mac;
    std::string deviceId;
    std::optional<int> bus;
    int device = 0;
    int function = 0;
    bool inTable = false;
    bool inDirectory = false;
    // Without a line where no directory told it.
    std::vector<report::ListedComponent> components;
    std::optional<int> subsystem;
    std::optional<std::string> driver;  // empty when none is bound
    std::optional<std::string> stamp;
    bool ybIsRight = false;
};

// Those that the latest log lists, in its order.
using ToldServer = std::vector<ToldPort>;

// Adds what the next run of the same server tells, as this run found it: where
// runs differ, the later one counts. Throws Failure(exitUsage) when it lists no
// port, or none that earlier runs had.
void takeRun(ToldServer& server, const report::Run& run);

}  // namespace emulator
