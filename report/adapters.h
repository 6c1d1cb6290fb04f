// The adapters of a server, put together from the logs of its runs: what the
// virtual adapters need to stand for them.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "data.h"
#include "run.h"

namespace report {

struct ServerPort {
    std::string mac;
    std::string deviceId;
    std::optional<int> bus;
    int device = 0;
    int function = 0;
    bool inTable = false;
    bool inDirectory = false;
    std::vector<ListedComponent> components;  // without a line where no directory told it
    std::optional<int> subsystem;
    std::optional<std::string> driver;  // empty when none is bound
    std::optional<std::string> stamp;
    YbOutcome yb = YbOutcome::none;
};

struct Server {
    std::vector<ServerPort> ports;  // those that the latest log lists
};

// Adds what the next run of the same server tells, as this run found it: where
// runs differ, the later one counts. False, with the reason in `trouble`, when it
// lists no port, or none that earlier runs had.
bool takeRun(Server& server, const Run& run, std::string& trouble);

// The document that the virtual adapters take, with a comment wherever no log told
// what it holds.
Json toAdapters(const Server& server);

}  // namespace report
