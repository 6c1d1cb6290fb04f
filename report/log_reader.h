// Reads the log of a run, line by line, and keeps what is reported.
//
//   log       = heading [title (usage | reboot | run)]
//   run       = "No duplicate MACs found. Okay" discovery operation removal
//   discovery = listing {port} | failure
//   listing   = command quote(listing) command
//   port      = command ["Error 9"]
//   command   = "About to execute" quote(output) ("returned code" | "Skipping command")
//   operation = table | {directory} | {switch} | table {visit} discovery table summary | ...
//   directory = "Directory information" quote(directory)
//
// Quotes hold any bytes, also lines that look like the tool's own, and decide
// nothing. Each has its own closing line:
//
//   a command's output    the "returned code" line with the very text of that
//                         command, or, for a flash, "Skipping command" at once
//   the utility's list    "About to execute" with the removal of its file
//   a directory           the outcome of the step, with the port's MAC; in a
//                         run of directories, the next port's or a removal
//   the field YB          the end of the line that holds it
//
// Only commands that add to the log have output there; a line that isn't closed where
// the tool's text begins is closed in its middle. A closing line may itself be quoted.
// The tool never writes one twice for the same step, so when it comes again the log is
// doubtful: the worse of the two counts.
#pragma once

#include <cstddef>
#include <string_view>

#include "line_cutter.h"
#include "reader_state.h"

namespace report {

// Takes the next line, without its line feed.
void readLine(LogReader& reader, std::string_view line, size_t number);

// Takes the next bytes of the log, however many, and ends it behind the last.
void readBytes(LogReader& reader, LineCutter& cutter, std::string_view bytes);
void readRest(LogReader& reader, LineCutter& cutter);

// Ends the log. The run is the reader's no longer.
Run finishLog(LogReader& reader);

}  // namespace report
