// Runs the unmodified program on virtual adapters and records all that it did.
//
// Works only inside script/sandbox, with the build directory shown at /build
// and emulator/fleets at /fleets: the machine's own directories are emptied
// for every package. Set-up that fails throws std::runtime_error.
#pragma once

#include <sys/types.h>

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace e2e {

using Json = nlohmann::ordered_json;
using Texts = std::vector<std::string>;

inline const std::string packageDirectory = "/package";
inline const std::string logDirectory = "/var/log/Marvek_Support";

// The status of a run that had to be killed because it did not end.
constexpr int neverEnded = -1;

struct Result {
    int status = neverEnded;  // as a shell gives it: 128 and the number for a signal
    std::string console;      // standard output and standard error in the order of writing
    std::string log;
    std::string logPath;  // empty when the run left no log
    Texts commands;       // those that the log announces, in order, each as it was run
    Texts files;          // new in the package directory, sorted; the log doesn't count
};

// False, with the reason on standard error, where running the program could
// reach a real machine.
bool isSandboxed();

// False where the sandbox is a stand-in without mounts: there, makeReadOnly and
// fillUp can't do their job.
bool canMount();

// A fresh machine (/var with an empty /var/log, /tmp) and a fresh package made
// from a ready fleet.
void makePackage(const std::string& fleet);

// The state of the adapters. It lies outside the package directory, as do the
// counters of the faults.
Json readAdapters();
void writeAdapters(const Json& adapters);

// Sets places of the adapters' state; the keys of `edits` are JSON pointers.
void editAdapters(const Json& edits);

// Runs ./zentrix in the package directory, in a process group of its own, with
// no input. `prepare` runs in the new process, just before the program.
Result run(const Texts& arguments, const std::function<void()>& prepare = {});

// Starts the same beside the test, with its console at `output`; then waits for its end and gives
// its status as a shell would.
pid_t startRun(const Texts& arguments, int output);
int awaitEnd(pid_t process);

// The line of a text, from `at` on, that tells how a command ended: with an
// exit code or skipped. Moves `at` behind it; empty when there is none.
std::string takeOutcome(const std::string& text, const std::string& command, size_t& at);

// What a directory can come to: nothing in it can be changed, or nothing more
// be written, since a file "filler" takes all the room. For the package
// directory or one below /var.
void makeReadOnly(const std::string& directory);
void fillUp(const std::string& directory);

// Empty when the file can't be read.
std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& text);

}  // namespace e2e
