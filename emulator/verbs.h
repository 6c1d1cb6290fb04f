// What each of the utility's verbs does to the virtual adapters.
#pragma once

#include "command.h"
#include "console.h"
#include "exit_code.h"
#include "fleet.h"

namespace emulator {

struct Session {
    Command command;
    Fleet fleet;
    Port port = {};  // null pointers when the command names no port
    Console console = {};
    bool changed = false;  // the fleet must be saved
};

// Carries the command out on the fleet in memory and says what it did on the
// console. Throws Failure when the command makes no sense for the adapter.
ExitCode carryOut(Session& session);

}  // namespace emulator
