// The command line, classified. Nothing starts here.
#pragma once

namespace fwup {

enum RunMode {
    defaultUpdate = 0,
    silentUpdate = 1,
    versionsMode = 2,
    usageMode = 3,
    usageErrorMode = 4,
    disableMfwMode = 5,
    crcCheckMode = 6,
    forcedUpdate = 7,
    silentForcedUpdate = 8,
    ncsiEnableMode = 9,
    ncsiDisableMode = 10,
    iscsiConfigUpdate = 11,
    directoryMode = 12,
    iscsiVersionsMode = 13,
    vtNcsiUpdate = 14,
};

// The mode that the arguments ask for; case does not count. Anything but no
// option, one known option or a known pair is usageErrorMode.
RunMode processCmdLine(int argc, const char* const* argv);

// Prints the usage text on the console; it never goes to the log.
void displayUsage();

}  // namespace fwup
