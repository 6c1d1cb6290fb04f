#include "log/response_file.h"

#include <cstdio>

#include "log/command_runner.h"
#include "log/update_log.h"

namespace fwup {

bool createResponseFile(const char* name) {
    FILE* file = fopen(name, "w+t");
    if (file != nullptr) {
        const bool written = fprintf(file, "%s\n", name) > 0;
        if (fclose(file) == 0 && written) {
            return true;
        }
        // An empty answer would leave the utility waiting or refusing.
        deleteFile(name);
    }
    writeMessage(true, "Error! Cannot create temporary file \"%s\".\n", name);
    return false;
}

bool createQuitFile() {
    return createResponseFile("q");
}

}  // namespace fwup
