#include "log/command_runner.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "log/file_util.h"
#include "log/update_log.h"

namespace fwup {

// Holds back every flash while it exists in /tmp/.
static const char* const dryRunMarker = "kvsupdbg-no-f-update.txt";

// The runner's own lines keep at most one character less than this.
constexpr size_t reportLimit = 1023;
using Report = char[reportLimit + 1];

static int skipCommand(const char* command) {
    Report line = {};
    snprintf(line, reportLimit, "\nSkipping command: \"%s\"\n", command);
    puts(line);
    writetoLog(line, false);
    printf("Skipping command %s\n", command);
    return 0;
}

int SYSTEM(const char* command) {
    Report line = {};
    snprintf(line, reportLimit, "\nAbout to execute: \"%s\"\n", command);
    writetoLog(line, false);
    if (strstr(command, "upgrade") != nullptr && is_file_present(dryRunMarker)) {
        return skipCommand(command);
    }
    // What was printed so far must stand before anything the child prints.
    fflush(stdout);
    const int status = system(command);
    snprintf(line, reportLimit, "Command \"%s\" returned code: %d\n ", command,
             convert_return_code(status));
    puts(line);
    writetoLog(line, false);
    return status;
}

int runCommand(const char* format, ...) {
    char command[1024];
    va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf(command, sizeof command, format, arguments);
    va_end(arguments);
    if (length < 0 || static_cast<size_t>(length) >= sizeof command) {
        return 1 * 256;
    }
    return SYSTEM(command);
}

int convert_return_code(int status) {
    return status / 256;
}

int deleteFile(const char* path) {
    return fileExist(path) ? runCommand("rm %s", path) : 0;
}

}  // namespace fwup
