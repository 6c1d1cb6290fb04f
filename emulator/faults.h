// Faults that adapters.json asks for, and the counters that say when they are
// due. The counters lie beside the real adapters.json, in a file of their own.
#pragma once

#include <string>

#include "fleet.h"

namespace emulator {

// The fault that is due for this event, or null. `kind` is "command" or "call"
// and `event` holds its facts as texts, by the names that a fault uses. Counts
// the event; throws Failure(exitFleet) when the counters can't be saved.
const Json* dueFault(const Fleet& fleet, const char* kind, const Json& event);

// Forgets all counts. Throws Failure(exitFleet).
void resetCounters(const Fleet& fleet);

// Where there are faults, leaves a file "overlap" beside the adapters when another
// command of the utility works on them now, or begins before this process ends.
void watchForAnother(const Fleet& fleet);

// A signal given by number or by name ("SIGTERM", "TERM"); 0 if it is neither.
int signalNumber(const Json& value);

}  // namespace emulator
