// Taking lines of a log apart, by their text alone.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "run.h"

namespace report {

// Without blanks, tabs, line feeds and carriage returns at its ends.
std::string_view trimmed(std::string_view text);

bool startsWith(std::string_view text, std::string_view start);
bool endsWith(std::string_view text, std::string_view end);

// What may be shown: "?" stands for what isn't ASCII or what a terminal would obey, a blank for a
// carriage return; one at the end is left out. Tabs stay.
std::string plainText(std::string_view text);

// The whole text as a decimal number, perhaps negative.
bool readNumber(std::string_view text, int& number);

// A text of the tool, without the blanks and line feeds around it; what stands in
// angle brackets differs from line to line.
constexpr size_t maxFields = 4;

struct Pattern {
    std::string_view parts[maxFields + 1];  // what stands around the fields
    size_t fields = 0;
};

Pattern takeApart(std::string_view text);

// Fields are taken from the right: what an adapter holds stands to the left of what the tool
// adds, and can't be taken for it.
bool match(const Pattern& pattern, std::string_view line, std::string_view (&fields)[maxFields]);

// A row of the version table; false for a line that is none.
bool readTableRow(std::string_view line, Port& row);

// --- What stands around a command, and what a command says of itself

constexpr std::string_view aboutTo = "About to execute: \"";
constexpr std::string_view commandResult = "Command \"";
constexpr std::string_view returnedCode = "\" returned code: ";

// The commands around the utility's list.
constexpr std::string_view listCommand = "./lnxfwvt2 <q >devices";
constexpr std::string_view removeList = "rm devices";

// The word of a command behind its first `count` words; empty when there is none.
std::string_view wordOf(std::string_view command, size_t count);

// Whether a command's output is added to the log, whose name the log itself
// doesn't tell otherwise.
bool isLogged(std::string_view command);

bool isFlash(std::string_view command);

// A "returned code" line at the end of a line, behind whatever the utility left
// without a line feed.
struct Return {
    std::string_view line;
    std::string_view command;
    int code = 0;
};

// False when the line doesn't end that way.
bool findReturn(std::string_view line, Return& found);

}  // namespace report
