// What each of the tool's own lines does to what is known of the run.
#pragma once

#include "reader_state.h"

namespace report {

// A line outside of all quotes.
void obey(LogReader& reader, const ToolLine& line);

}  // namespace report
