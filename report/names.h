// The words for outcomes and operations that the data and the screen share. One without its words
// does not compile.
#pragma once

#include "summary.h"

namespace report {

struct OperationWords {
    const char* name;    // in the data
    const char* words;   // on the screen
    const char* option;  // of the tool, behind a blank; empty for none
};

struct OutcomeWords {
    const char* name;
    const char* verdict;
};

OperationWords wordsOf(Operation operation);
OutcomeWords wordsOf(Outcome outcome);
// The component that was flashed; empty for an image of none.
std::string componentOf(const Flash& flash);

const char* nameOf(FlashOutcome outcome);
const char* nameOf(SwitchOutcome outcome);
const char* nameOf(CrcOutcome outcome);  // null where none was checked
const char* nameOf(YbOutcome outcome);   // null where none was checked
const char* nameOf(StepCode code);

}  // namespace report
