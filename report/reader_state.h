// Where the reader of a log is, what it has found so far, and how it goes back
// when a quote turns out to have ended too early.
#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <set>
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
    size_t listings = 0;
    size_t directories = 0;
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
    std::set<std::string, std::less<>> known;  // the same MACs as run.macs
    std::deque<Checkpoint> checkpoints;        // of the latest quotes
    size_t number = 0;                         // of the line that is read
    bool isLog = true;                         // false when the first line is no log's
};

// From here on lines are quoted, until one that `key` tells of.
void beginQuote(LogReader& reader, Quote quote, std::string key);

// The latest quote with this key; null when there is none.
Checkpoint* findCheckpoint(LogReader& reader, std::string_view key);

// Opens the latest quote with this key again and forgets all since then; false
// when there is none.
bool reopen(LogReader& reader, std::string_view key);

// Adds a port that the utility has listed, and tells one.
void addPort(LogReader& reader, std::string_view mac);
bool isKnown(const LogReader& reader, std::string_view mac);

// The visit that is going on, if it is this port's; otherwise null.
Visit* visitOf(LogReader& reader, std::string_view mac);

// Null before the first.
Flash* lastFlash(LogReader& reader);

void addFinding(LogReader& reader, LineKind kind, std::string_view text, std::string_view mac = {},
                std::string_view component = {});

}  // namespace report
