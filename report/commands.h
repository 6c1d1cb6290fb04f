// The commands that a run announces, and what follows from their results.
#pragma once

#include <string_view>

#include "reader_state.h"

namespace report {

// Takes a line that announces a command or tells its result; false for any other.
bool readCommandLine(LogReader& reader, std::string_view line);

// Takes the second line of a command that holds a line feed; false when the line
// before this one began none.
bool readBrokenCommand(LogReader& reader, std::string_view line);

// The command that is open was held back, which the tool takes for a success.
void skipCommand(LogReader& reader, std::string_view line, const Advice& advice);

// A "returned code" line of a command that isn't open: nobody can tell which of the two
// lines about it is the tool's, so the worse counts.
void doubtReturn(LogReader& reader, std::string_view line, std::string_view command);

}  // namespace report
