// The utility's command line, classified but not yet carried out.
#pragma once

#include <string>
#include <vector>

namespace emulator {

struct Command {
    std::string verb;       // list, dir, delete, upgrade, show, set or crc
    std::string mac;        // empty for "list"
    std::string component;  // block, image kind, or "cfg" field or switch
    std::string value;      // to be set
    std::string image;      // file name
    std::string backup;     // file name, or empty
    bool force = false;
};

// Throws Failure(exitUsage) with the reason.
Command parseCommand(const std::vector<std::string>& arguments);

extern const char usageText[];

}  // namespace emulator
