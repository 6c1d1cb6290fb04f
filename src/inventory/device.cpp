#include "inventory/device.h"

#include <strings.h>

#include <cstdio>

namespace fwup {

void setVersion(VersionField& field, const char* text) {
    snprintf(field, sizeof field, "%.14s", text);
}

bool isPresent(const VersionField& field) {
    return strcasecmp(field, "NA") != 0;
}

int is_valid_driver(const Device* device) {
    return isPresent(device->driverVer) ? 0 : 2;
}

int is_valid_firmware(const Device* device) {
    return isPresent(device->bootVer) || isPresent(device->mfwVer) ? 0 : 2;
}

}  // namespace fwup
