// A run as a screen for people: is all well, what isn't, what to do now.
#pragma once

#include <string>

#include "summary.h"

namespace report {

// The path of the log is plain text.
std::string toScreen(const std::string& log, const Run& run, const Summary& summary, bool colour);

}  // namespace report
