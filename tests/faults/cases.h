// The cases: in which mode of the program which fault happens where.
#pragma once

#include <string>
#include <vector>

#include "harness.h"

namespace faults {

struct Mode {
    const char* name;
    e2e::Texts arguments;
    bool updates;               // an update pass belongs to it
    const char* problem = "";   // what zentrix-report finds although nothing goes wrong
    e2e::Json edits = nullptr;  // of the adapters before the run, as editAdapters takes them
};

// The room that a file takes at least.
constexpr unsigned pageSize = 4096;

// What the places of a fault are numbered by, from 1 on; `updates` has one in modes that update.
enum class Places { once, updates, commands, calls, logPages, files };

enum Trait : unsigned {
    losesLog = 1,
    kills = 2,    // the tool itself, in the midst of a command
    lingers = 4,  // that command goes on without it
};

struct Fault {
    const char* name;
    Places places;
    e2e::Json effect;  // at the place, as adapters.json has it; or null
    unsigned traits = 0;
    void (*spoil)(unsigned) = nullptr;  // changes the surroundings; or null
    const char* mended = nullptr;       // a pattern: what advice to mend it speaks of; or null
};

extern const std::vector<Mode> modes;
extern const std::vector<Fault> allFaults;

struct Case {
    const Mode* mode;
    const Fault* fault;
    unsigned place;
    bool sticks = false;  // strikes the same command or function again and again
};

bool hasTrait(const Case& c, unsigned anyOf);

// "mode/fault/place", with "/again" where it sticks, which names the case on a command line.
std::string nameOf(const Case& c);

// A fresh package and machine for the mode, nothing wrong with it yet.
void makeMachine(const Mode& mode);

// Has the next run count its commands and library calls, for countOf().
void startCounting();
unsigned countOf(Places places);

// Brings the case's fault about, and tells after the run whether it happened.
void applyFault(const Case& c);
bool faultHappened(const Case& c);

// Whether two commands of the utility worked at the same time.
bool overlapped();

// Makes all well again, but leaves what a run did to adapters and files.
void liftFaults();

}  // namespace faults
