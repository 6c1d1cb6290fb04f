// What zentrix-report must say of every run, judged by what truly happened: the
// exit status, the adapters, and the fault itself.
#pragma once

#include "rules.h"
#include "summary.h"

namespace faults {

struct Told {
    bool isRead = false;  // an empty log is refused
    report::Run run;
    report::Summary summary;
};

// What it makes of a log, where `history` tells of those before it.
Told tell(const std::string& log, report::History* history = nullptr);

// Whether any of them concerns the adapter, or all of them.
bool isTold(const std::vector<report::Problem>& told, const nlohmann::json& adapter);

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
