#include "log/response_file.h"

#include <cstdio>

#include "log/command_runner.h"
#include "log/update_log.h"

namespace fwup {

bool createResponseFile(const char* name) {
    FILE* file = fopen(name, "w+t");
    const bool written = file != nullptr && fprintf(file, "%s\n", name) > 0;
    // A full disk may show only when the buffer is flushed.
    if (file != nullptr && fclose(file) == 0 && written) {
        return true;
    }
    writeMessage(true, "Error! Cannot create temporary file \"%s\".\n", name);
    if (file != nullptr) {
        deleteFile(name);
    }
    return false;
}

bool createQuitFile() {
    return createResponseFile("q");
}

}  // namespace fwup
