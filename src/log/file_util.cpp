#include "log/file_util.h"

#include <sys/stat.h>

#include <cstdio>

namespace fwup {

bool fileExist(const char* path) {
    struct stat status;
    return stat(path, &status) == 0;
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

}  // namespace fwup
