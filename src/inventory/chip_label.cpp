#include "inventory/chip_label.h"

#include <cstdio>
#include <cstdlib>

namespace fwup {

struct ChipLabel {
    unsigned long deviceId;
    const char* label;  // four or five characters
};

// Until the maker's model numbers are known, the device ID is the honest label.
static const ChipLabel chipLabels[] = {
    {0x3C01, "3C01"}, {0x3C02, "3C02"}, {0x3C03, "3C03"},
    {0x3C04, "3C04"}, {0x3C05, "3C05"}, {0x3C06, "3C06"},
};

void convertDIDtoName(const char* did, char* label) {
    const unsigned long deviceId = strtoul(did, nullptr, 16);
    for (const ChipLabel& row : chipLabels) {
        if (row.deviceId == deviceId) {
            snprintf(label, chipLabelSize, "%s", row.label);
            return;
        }
    }
    snprintf(label, chipLabelSize, "unknown");
}

}  // namespace fwup
