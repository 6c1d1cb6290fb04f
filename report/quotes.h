// What is quoted in a log, and where the tool's own text goes on.
#pragma once

#include <string_view>

#include "reader_state.h"

namespace report {

// The end of a quoted line that is the tool's; empty when none of it is.
std::string_view endOfQuote(LogReader& reader, std::string_view line);

// What was taken for a quote's end may have been quoted itself, and the true one
// stands behind the rest of the quote on the same line. The line from there on;
// the whole one when nothing is hidden in it.
std::string_view endOfForgery(LogReader& reader, std::string_view line);

}  // namespace report
