// What zentrix-report must say of every run, judged by what truly happened: the
// exit status, the adapters, and the fault itself.
#pragma once

#include "rules.h"
#include "summary.h"

namespace faults {

e2e::Texts wordsOf(const std::string& text);

// The data that it makes of a log, where `history` tells of those before it. The outcome of a log
// that it refuses is "refused".
e2e::Json tell(const std::string& log, report::History* history = nullptr);

// Whether any of these problems concerns the adapter, or all of them.
bool isTold(const e2e::Json& problems, const nlohmann::json& adapter);

// Whether the command that the fault struck claims to have done what it didn't, and
// nothing that the tool logs afterwards shows it.
bool isUntold(const Case& place, const Run& run);

// The exit status; none only where the run was killed.
bool reportTellsStatus(const Trial& trial);

// A killed run was cut off, in the very command that it was running.
bool reportTellsCut(const Trial& trial);

// What is told to be updated, stamped or switched is so in the adapters, and what
// has been updated there is told.
bool reportTellsAdapters(const Trial& trial);

// The command that failed, and every adapter that is not as without the fault, has its
// problem.
bool reportTellsProblems(const Trial& trial);

// A run that nothing disturbed has no problems but those of its adapters.
bool reportRaisesNoAlarm(const Trial& trial);

}  // namespace faults
