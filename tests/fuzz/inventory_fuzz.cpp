// The inventory lookups and the version word: any inventory file.
#include <cstring>

#include "fuzz_io.h"
#include "inventory/firmware_inventory.h"
#include "inventory/version_word.h"
#include "log/update_log.h"
#include "maintenance/diagnostics.h"

static void parseEveryPiece(const char* path) {
    FILE* file = fopen(path, "r");
    require(file != nullptr);
    char line[fwup::inventoryLineSize];
    while (fgets(line, sizeof line, file) != nullptr) {
        const size_t length = strlen(line);
        require(fwup::parseForVersion(line) && strlen(line) <= length);
    }
    fclose(file);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    snprintf(fwup::szFwuplog, sizeof fwup::szFwuplog, "/dev/null");
    fwup::bSilent = 1;
    fwup::Device device = {};
    snprintf(device.didStr, sizeof device.didStr, "3C01");
    snprintf(device.mac, sizeof device.mac, "020000000001");
    writeInput(device.mac, data, size);
    parseEveryPiece(device.mac);
    fwup::readInventory(&device);
    require(device.hasMgmtFw == 1 || strcmp(device.pxeVer, "NA") == 0);
    fwup::DeviceHeadTail list = {&device, &device};
    fwup::display_iscsicfg_versions(&list);
    return 0;
}
