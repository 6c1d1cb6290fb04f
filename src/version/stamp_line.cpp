#include "version/stamp_line.h"

#include <cstdio>
#include <cstring>

#include "version/version_string.h"

namespace fwup {

bool readStampValue(const char* line, char* value) {
    char work[stampValueSize];
    snprintf(work, sizeof work, "%.63s", line);
    char* rest = nullptr;
    strtok_r(work, ":", &rest);
    const char* field = strtok_r(nullptr, ":", &rest);
    if (field == nullptr) {
        return false;
    }
    snprintf(value, stampValueSize, "%s", field);
    trim_left(value);
    trim_right(value);
    return true;
}

}  // namespace fwup
