// The texts that stand around a command in the log, and what a command says of
// itself.
#pragma once

#include <string_view>

namespace report {

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
