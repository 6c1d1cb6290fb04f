// Reads the log of a run, line by line, and keeps what is reported.
//
//   log       = header [title (usage | reboot | run)]
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
// Only commands that add to the log have output there; a line that isn't
// closed where the tool's text begins is closed in its middle. A closing line
// may itself be quoted. The tool never writes one twice for the same command,
// so when it comes again outside of any quote, the earlier one was the
// utility's: everything since then is forgotten and the quote ends here. When
// it comes again inside a later quote, either of the two may be the utility's:
// if they differ, the worse counts, and a finding tells of the doubt.
#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "run.h"

namespace report {

enum class Quote { none, output, listing, directory, yb };

// What the next outcome line is about.
enum class Awaited { nothing, flash, stamp, crc, blockRemoval, ybFix, switching };

// All that changes from line to line, besides the records.
struct Position {
    Quote quote = Quote::none;
    bool quotedText = false;  // something else than blanks was quoted
    Awaited awaited = Awaited::nothing;
    std::string open;  // the command that is being run
    bool isOpen = false;
    std::string broken;  // the beginning of a command that goes on in the next line
    bool brokenReturn = false;
    std::string directoryOf;  // the port whose directory is quoted
    bool inTable = false;
    bool tableIsSecond = false;
    bool headerOnly = true;  // as the usage text leaves it
    bool titleSeen = false;
    int stampForces = -1;
    int passStatus = 0;  // as the pass would end with now
    Operation operation = Operation::none;
    bool listed = false;    // the first discovery has ended
    bool passOver = false;  // an update has come to its second discovery
    bool removedQuitFile = false;
    std::optional<int> exitStatus;
};

// Where a quote began, to go back to.
struct Checkpoint {
    std::string key;          // the command, or what else tells its closing line
    std::optional<int> code;  // with which the command was closed
    Position position;
    size_t macs = 0;
    size_t before = 0;
    size_t after = 0;
    size_t visits = 0;
    size_t flashes = 0;
    size_t switches = 0;
    size_t findings = 0;
    bool hasAfter = false;
    std::optional<Visit> visit;  // the last ones, which may still change
    std::optional<Flash> flash;
    std::optional<Switch> lastSwitch;
};

struct LogReader {
    Run run;
    Position at;
    std::deque<Checkpoint> checkpoints;  // of the latest quotes
    size_t number = 0;                   // of the line that is read
    bool isLog = true;                   // false when the first line is no log's
};

// Takes the next line, without its line feed.
void readLine(LogReader& reader, std::string_view line, size_t number);

// Ends the log. The run is the reader's no longer.
Run finishLog(LogReader& reader);

}  // namespace report
