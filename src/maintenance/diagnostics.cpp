#include "maintenance/diagnostics.h"

#include <cstdio>

#include "inventory/component_table.h"
#include "inventory/firmware_inventory.h"
#include "inventory/version_word.h"
#include "log/command_runner.h"
#include "log/response_file.h"
#include "log/update_log.h"

namespace fwup {

bool create_yes_response_file() {
    return createResponseFile("y");
}

// Any status but 0 is a failure here, "reboot required" too.
static void reportCrc(int status, const char* mac) {
    if (status == 0) {
        writeMessage(false, "*** Successfully completed CRC check on device %s ***\n\n", mac);
        showMarker("\t---> successful");
        return;
    }
    showMarker("\t---> failed");
    writeMessage(false, " !!! Error performing CRC check on device %s !!!\n\n", mac);
}

static void checkDevice(const Device* device, const char* flashTool) {
    if (is_valid_driver(device) == 2) {
        if (bSilent != 1) {
            printf("Performing CRC check for device %s\t---> failed (adapter is down)\n",
                   device->mac);
        }
        writeMessage(false,
                     "\n\n!!! Error performing CRC check on device %s, adapter is down !!!\n\n",
                     device->mac);
        return;
    }
    writeMessage(true, "Performing CRC check for device %s", device->mac);
    writetoLog("\n", false);
    fflush(stdout);
    const int status = runCommand("%s %s crc <y >>%s", flashTool, device->mac, szFwuplog);
    write_device_info_file_to_log(device->mac, false);
    reportCrc(status, device->mac);
}

void perform_crc_check(const DeviceHeadTail* list, const char* flashTool) {
    if (!create_yes_response_file()) {
        return;
    }
    writetoLog("\nNow starting a CRC check for each Kelvane Ethernet adapter.\n", true);
    for (const Device* device = firstDevice(list); device != nullptr; device = device->next) {
        checkDevice(device, flashTool);
    }
    writetoLog("\nCRC check complete.\n", true);
    deleteFile("y");
}

void perform_dir_command(const DeviceHeadTail* list) {
    for (const Device* device = firstDevice(list); device != nullptr; device = device->next) {
        write_device_info_file_to_log(device->mac, true);
    }
}

static void displayBlock(const Device* device, const IscsiBlock& block) {
    char line[inventoryLineSize];
    if (!IsFwTypePresent(device, block.needles[0], line) &&
        !IsFwTypePresent(device, block.needles[1], line)) {
        return;
    }
    size_t length = 0;
    const char* version = "NA";
    if (findVersionWord(line, &length) != nullptr) {
        parseForVersion(line);
        version = line;
    }
    // The version may fill its line: more than a message holds.
    char text[messageSize + inventoryLineSize];
    snprintf(text, sizeof text, "%s version for %s is %s\n", block.versionLabel, device->mac,
             version);
    writetoLog(text, true);
}

void display_iscsicfg_versions(const DeviceHeadTail* list) {
    for (const Device* device = firstDevice(list); device != nullptr; device = device->next) {
        for (const IscsiBlock& block : iscsiBlocks) {
            displayBlock(device, block);
        }
    }
}

}  // namespace fwup
