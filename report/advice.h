// What each text about a failure means: cause, state of the adapters, next
// step. The words are those of the manual page of the tool, which a test holds
// against this table.
#pragma once

#include <cstddef>

#include "tool_line.h"

namespace report {

// What is left to do, for the list that ends a report.
enum Action : unsigned {
    actNothing = 0,
    actRunAgain = 1,
    actForce = 2,   // run again, forced
    actReboot = 4,  // before anything else is run
    actStayUp = 8,  // no reboot before the next run
    actSupport = 16,
    actDriver = 32,
};

struct Advice {
    LineKind kind;
    const char* word;  // for it, in the data
    bool failure;      // makes the run a failed one, whatever its exit status
    const char* cause;
    const char* adapters;
    const char* next;
    unsigned actions;
    const char* errand;  // what is to be done before the next run; null when nothing is
};

extern const Advice advices[];
extern const size_t adviceCount;

// Null for a line that tells of no trouble.
const Advice* adviceFor(LineKind kind);

}  // namespace report
