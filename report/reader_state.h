// Where the reader of a log is, and what it has found so far.
#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "run.h"

namespace report {

enum class Quote { none, output, listing, directory, yb };

// A step of the tool whose outcome a line of its own tells, behind the command's result.
enum class Awaited { nothing, flash, stampCheck, stamp, crc, blockRemoval, ybFix, switching };

struct LogReader {
    Run run;
    std::set<std::string, std::less<>> known;  // the same MACs as run.macs
    size_t number = 0;                         // of the line that is read
    bool isLog = true;                         // false when the first line is no log's
    size_t secondHeading = 0;                  // the line with which another log begins; 0 for none
    Quote quote = Quote::none;
    bool quotedText = false;  // something else than blanks was quoted
    std::string lastQuoted;   // the last line that is more than blanks
    Awaited awaited = Awaited::nothing;
    int code = 0;      // of the command whose outcome is awaited
    std::string open;  // the command that is being run
    bool isOpen = false;
    std::string broken;  // the beginning of a command that goes on in the next line
    bool brokenReturn = false;
    std::string directoryOf;    // the port whose directory is quoted
    bool endedListing = false;  // the quote that this line has ended was the list
    bool inTable = false;
    bool tableIsSecond = false;
    bool headingOnly = true;  // as the usage text leaves it
    int stampForces = -1;
    int passStatus = 0;     // as the pass would end with now
    bool listed = false;    // the first discovery has ended
    bool passOver = false;  // an update has come to its second discovery
    bool removedQuitFile = false;
};

// From here on lines are quoted.
void beginQuote(LogReader& reader, Quote quote);

// Adds a port that the utility has listed, and tells one.
void addPort(LogReader& reader, std::string_view mac);
bool isKnown(const LogReader& reader, std::string_view mac);

// The visit that is going on, if it is this port's; otherwise null.
Visit* visitOf(LogReader& reader, std::string_view mac);

// Null before the first.
Flash* lastFlash(LogReader& reader);

void addFinding(LogReader& reader, const Advice& advice, std::string_view text,
                std::string_view mac = {}, std::string_view component = {});

// The log contradicts itself in this line. One finding stands for all.
void doubt(LogReader& reader, std::string_view line);

}  // namespace report
