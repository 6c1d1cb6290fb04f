#include "log/file_util.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace fwup {

bool fileExist(const char* path) {
    struct stat status;
    // EOVERFLOW: the file is there, only its time stamp lies beyond 2038, which
    // a 32-bit time_t can't hold.
    return stat(path, &status) == 0 || errno == EOVERFLOW;
}

bool file_exists(const char* path) {
    FILE* file = fopen(path, "r");
    if (file == nullptr) {
        return false;
    }
    fclose(file);
    return true;
}

bool is_file_present(const char* name) {
    char path[255];
    snprintf(path, sizeof path, "/tmp/%s", name);
    return file_exists(path);
}

bool findLineAndClose(FILE* file, const char* needle, char* line, int size) {
    if (file == nullptr) {
        return false;
    }
    bool found = false;
    while (!found && fgets(line, size, file) != nullptr) {
        found = strstr(line, needle) != nullptr;
    }
    fclose(file);
    return found;
}

}  // namespace fwup
