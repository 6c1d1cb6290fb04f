// What zentrix-report must say of every run, judged by what truly happened: the
// exit status, the console, the adapters, and the fault itself.
#pragma once

#include "rules.h"

namespace faults {

// The exit status; none only where the run was killed.
bool reportTellsStatus(const Trial& trial);

// A killed run was cut off, in the very command that it was running.
bool reportTellsCut(const Trial& trial);

// What is told to be updated, stamped or switched is so in the adapters, and what
// has been updated there is told.
bool reportTellsAdapters(const Trial& trial);

// The command that failed, each failure that the console shows, and every adapter
// that is not as without the fault has its problem.
bool reportTellsProblems(const Trial& trial);

// A run that nothing disturbed has no problems but those of its adapters.
bool reportRaisesNoAlarm(const Trial& trial);

}  // namespace faults
