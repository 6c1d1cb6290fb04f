#include "inventory/supported_device.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace fwup {

// Until the maker's model numbers are known, the device ID is the honest label.
const SupportedDevice SUPDID[] = {
    {"3C01", "3C01"}, {"3C02", "3C02"}, {"3C03", "3C03"},   {"3C04", "3C04"},
    {"3C05", "3C05"}, {"3C06", "3C06"}, {nullptr, nullptr},
};

bool is_did_supported(const char* did) {
    for (const SupportedDevice* device = SUPDID; device->did != nullptr; device++) {
        if (strcmp(did, device->did) == 0) {
            return true;
        }
    }
    return false;
}

void convertDIDtoName(const char* did, char* label) {
    const unsigned long wanted = strtoul(did, nullptr, 16);
    for (const SupportedDevice* device = SUPDID; device->did != nullptr; device++) {
        if (strtoul(device->did, nullptr, 16) == wanted) {
            snprintf(label, chipLabelSize, "%s", device->label);
            return;
        }
    }
    snprintf(label, chipLabelSize, "unknown");
}

}  // namespace fwup
