// The device table: any listing, read in the pieces that discovery reads.
#include <cstring>

#include "fuzz_io.h"
#include "inventory/device_table.h"
#include "inventory/supported_device.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FILE* listing = openInput(data, size);
    if (listing == nullptr) {
        return 0;
    }
    char line[fwup::tableLineSize];
    fwup::TableState state = fwup::TableState::beforeHeader;
    fwup::DeviceRow row;
    while (fgets(line, sizeof line, listing) != nullptr) {
        if (fwup::readTableLine(&state, line, &row)) {
            require(state == fwup::TableState::rows);
            require(fwup::is_did_supported(row.didStr));
            require(strlen(row.mac) < sizeof row.mac && strstr(line, row.mac) != nullptr);
        }
    }
    fclose(listing);
    return 0;
}
