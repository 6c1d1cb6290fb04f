#include "run/command_line.h"

#include <strings.h>

#include <cstdio>

namespace fwup {

struct Option {
    const char* first;
    const char* second;  // null for a single option
    RunMode mode;
};

static const Option options[] = {
    {"-s", nullptr, silentUpdate},
    {"-v", nullptr, versionsMode},
    {"-?", nullptr, usageMode},
    {"-nomfw", nullptr, disableMfwMode},
    {"-crc", nullptr, crcCheckMode},
    {"-force", nullptr, forcedUpdate},
    {"-f", nullptr, forcedUpdate},
    {"-s", "-force", silentForcedUpdate},
    {"-force", "-s", silentForcedUpdate},
    {"-ncsienable", nullptr, ncsiEnableMode},
    {"-ncsidisable", nullptr, ncsiDisableMode},
    {"-iscsicfgupdate", nullptr, iscsiConfigUpdate},
    {"-dir", nullptr, directoryMode},
    {"-iscsicfgversion", nullptr, iscsiVersionsMode},
    {"-vtncsi", nullptr, vtNcsiUpdate},
};

static bool matches(const Option& option, int argc, const char* const* argv) {
    if (strcasecmp(argv[1], option.first) != 0) {
        return false;
    }
    return option.second == nullptr ? argc == 2
                                    : argc == 3 && strcasecmp(argv[2], option.second) == 0;
}

RunMode processCmdLine(int argc, const char* const* argv) {
    // An empty argument vector is no option either.
    if (argc <= 1) {
        return defaultUpdate;
    }
    for (const Option& option : options) {
        if (matches(option, argc, argv)) {
            return option.mode;
        }
    }
    return usageErrorMode;
}

void displayUsage() {
    puts("Usage:\n");
    printf("   %s [OPTION]\n\n\n", "./zentrix");
    puts("The options are:\n");
    puts("   -v\t\t\t(Display currently installed firmware versions.)");
    puts("   -s\t\t\t(Perform silent firmware update.)");
    puts("   -nomfw\t\t(Disable Management Firmware on all NICs.)");
    puts("   -ncsienable\t(Enable NCSI on all NCSI capable NICs.)");
    puts("   -ncsidisable\t(Disable NCSI on all NCSI capable NICs.)");
    puts("   -crc\t\t\t(Perform CRC check.)");
    puts("   -f\t\t\t(Force firmware update.)");
    puts("   -?\t\t\t(Display this usage information.)");
}

}  // namespace fwup
