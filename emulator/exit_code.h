// How the flash utility ends, and the failure that carries such an ending.
#pragma once

#include <stdexcept>
#include <string>

#include "log/flash_tool_code.h"

namespace emulator {

enum ExitCode : int {
    exitDone = 0,
    exitUsage = 2,                            // unknown verb, option or value
    exitFleet = 3,                            // adapters.json missing, malformed or not writable
    exitNoPort = 4,                           // no port has this MAC
    exitBrokenImage = 5,                      // the image can't be read or is no image
    exitNoComponent = 6,                      // the adapter has no such component or block
    exitCancelled = 7,                        // a question was not answered with yes
    exitCrc = 8,                              // the CRC check found damage
    exitOutput = 9,                           // the answer or a backup file couldn't be written
    exitNotNewer = fwup::codeNoUpdateNeeded,  // the image isn't newer than what is installed
    exitWrongImage = fwup::codeNotApplied,    // the image was made for something else
    exitRebootRequired = fwup::codeRebootRequired,  // done, in force after a reboot
};

// Ends a command: `what` goes to standard error, `code` is the exit code.
struct Failure : std::runtime_error {
    Failure(ExitCode exitCode, const std::string& what) : std::runtime_error(what), code(exitCode) {
    }
    ExitCode code;
};

}  // namespace emulator
