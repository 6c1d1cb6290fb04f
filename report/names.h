// The words for outcomes and operations that the data and the screen share.
#pragma once

#include "summary.h"

namespace report {

const char* nameOf(Operation operation);
const char* nameOf(Outcome outcome);
const char* nameOf(FlashOutcome outcome);
const char* nameOf(SwitchOutcome outcome);
const char* nameOf(CrcOutcome outcome);  // null where none was checked
const char* nameOf(YbOutcome outcome);   // null where none was checked

}  // namespace report
