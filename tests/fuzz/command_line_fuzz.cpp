// The command line: the input's lines as arguments.
#include <cstring>

#include "fuzz_io.h"
#include "run/command_line.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr int most = 8;
    char text[256];
    const size_t kept = size < sizeof text - 1 ? size : sizeof text - 1;
    memcpy(text, data, kept);
    text[kept] = '\0';
    const char* argv[most + 1] = {"./zentrix"};
    int argc = 1;
    char* rest = nullptr;
    for (char* argument = strtok_r(text, "\n", &rest); argument != nullptr && argc < most;
         argument = strtok_r(nullptr, "\n", &rest)) {
        argv[argc++] = argument;
    }
    const fwup::RunMode mode = fwup::processCmdLine(argc, argv);
    require(mode >= fwup::defaultUpdate && mode <= fwup::vtNcsiUpdate);
    require((argc == 1) == (mode == fwup::defaultUpdate));
    require((argc == 3 && mode != fwup::usageErrorMode) == (mode == fwup::silentForcedUpdate));
    return 0;
}
