// Runs that are described as data, in cases/*.json.
//
// A file is a list of cases. A case makes a package and runs the program once:
//   "name"       what it is about
//   "fleet"      the ready fleet to use (default: "one")
//   "edits"      places of adapters.json to set, by JSON pointer
//   "files"      to write first: a text, {"link": TARGET}, or null to remove;
//                a full path may lie outside the package
//   "directory"  "read-only" or "full", for the package directory
//   "run"        the arguments, separated by blanks (default: none)
// and then expects, besides what holds of every run:
//   "status"     the exit status; no case is without it
//   "says"       the whole console but for the outcomes of commands
//   "shows"      parts of that, in this order
//   "prints"     parts of the console as it is, in this order
//   "hides"      what is nowhere on the console
//   "logs"       parts of the log, in this order
//   "omits"      what is nowhere in the log
//   "commands"   for a word, all commands that contain it, in order
//   "left"       the files left in the package directory (default: none)
//   "after"      places of adapters.json and their values after the run
//   "holds"      files, by their full path, and what is in them after the run
//   "transcript" the file in tests/golden that holds what it says, and its log
//   "then"       a further run in the same package, with the same keys
// "${NAME}" stands for a text of texts.json, or for one of the case's own: with
// a list "with" of such sets of texts the case is run once for each.
// "${version}" is the program's.
//
// A text of several lines is a list of them, without anything between: in
// texts.json, for "says", and for each part of "shows", "prints" and "logs".
// So a line of a file holds one command or one message, and what needs no line
// of its own shares one up to column 100.
#pragma once

namespace e2e {

// Adds every case to the tests. Throws when a file can't be read.
void registerCases();

}  // namespace e2e
