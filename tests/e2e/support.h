// What the end-to-end tests share: the tool's often repeated texts, and runs
// that are checked for what must hold of every one.
#pragma once

#include <gtest/gtest.h>

#include "harness.h"

namespace e2e {

// A log's first lines.
inline const std::string header = "Kelvane Firmware Update Log.\n\n";

// Runs the program, and keeps what it said for the report on a test that fails.
Result watchedRun(const Texts& arguments, const std::function<void()>& prepare = {});

// Makes each test that fails explain itself: its runs, with console and end of
// the log, its place, and the command that repeats it alone.
void explainFailures();

// Runs the program and expects that log and console tell the same commands
// with the same outcomes, that every command has one, and that no file is left
// in the package directory but `left`.
Result checkedRun(const Texts& arguments = {}, const Texts& left = {});

// The console without the outcomes of commands that were run, which any mode
// shows.
std::string spoken(const Result& result);

// The commands that contain `word`, without the utility's path and the blanks
// at the end, and with LOG for the log's path.
Texts commandsWith(const Result& result, const std::string& word);

// True when all parts are found, each after the one before.
testing::AssertionResult hasInOrder(const std::string& text, const Texts& parts);

}  // namespace e2e
