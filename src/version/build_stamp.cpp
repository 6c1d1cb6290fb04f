#include "version/build_stamp.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "inventory/firmware_inventory.h"
#include "log/command_runner.h"
#include "log/file_util.h"
#include "log/update_log.h"
#include "version/stamp_line.h"
#include "version/version_string.h"

namespace fwup {

char* getBuildVer() {
    static char buildVer[50];
    memset(buildVer, 0, sizeof buildVer);
    FILE* file = fopen("BuildVersion.txt", "r");
    if (file == nullptr) {
        // Standard error isn't buffered: keep the true order on the console. A flush that fails
        // has a reason of its own, which isn't the file's.
        const int reason = errno;
        fflush(stdout);
        errno = reason;
        perror("Error in opening file");
        return nullptr;
    }
    char line[49];
    if (fgets(line, sizeof line, file) != nullptr) {
        line[strcspn(line, "\n")] = '\0';
        snprintf(buildVer, sizeof buildVer, "%s", line);
    }
    fclose(file);
    return buildVer;
}

char* getVPDV0TempFileName(const Device* device) {
    static char name[128];
    memset(name, 0, sizeof name);
    if (device != nullptr) {
        snprintf(name, sizeof name, "%s_%s", device->mac, "VPD_V0_Data1.log");
    }
    return name;
}

int memorizeVPDVOForAdapter(const Device* device, const char* flashTool) {
    if (flashTool == nullptr || device == nullptr) {
        return 1;
    }
    const char* savedStamp = getVPDV0TempFileName(device);
    deleteFile(savedStamp);

    char text[messageSize];
    snprintf(text, sizeof text, "\nChecking VPD-V0 data for device %s did: %u ssid: %u \n ",
             device->mac, device->deviceId, device->subsysId);
    puts(text);
    writetoLog(text, false);

    char command[messageSize];
    snprintf(command, sizeof command, "%s %s cfg -show vpdv0 >%s \n", flashTool, device->mac,
             savedStamp);
    writetoLog(command, false);
    if (SYSTEM(command) != 0) {
        writeMessage(false, "\n!!! Error performing VPDV0 check on device %s !!!\n\n", device->mac);
        return 1;
    }
    snprintf(text, sizeof text,
             "*** Successfully completed performing V0 check on device %s ***\n\n", device->mac);
    puts(text);
    writetoLog(text, false);
    return 0;
}

void writeVPDV0ForAdapter(const Device* device, const char* flashTool, const char* buildVer) {
    char text[messageSize];
    snprintf(text, sizeof text, "\nWriting Build Version %s to vpd-v0 for device %s\n", buildVer,
             device->mac);
    printf("%s", text);
    writetoLog(text, false);

    char command[messageSize];
    snprintf(command, sizeof command, "%s %s cfg -noreset -vpdv0 %s >>%s", flashTool, device->mac,
             buildVer, szFwuplog);
    writetoLog(command, false);
    const int status = SYSTEM(command);
    write_device_info_file_to_log(device->mac, false);
    if (status != 0) {
        showMarker("\t---> failed");
        writeMessage(false, " !!! Error performing vpd-v0 update on device %s !!!\n\n",
                     device->mac);
        return;
    }
    writeMessage(false, "*** Successfully completed vpd-v0 update on device %s ***\n\n",
                 device->mac);
    showMarker("\t---> Update successful");
}

// The value of the saved file's first stamp line; false when it has none.
static bool readSavedStamp(const Device* device, char* onCard) {
    FILE* saved = fopen(getVPDV0TempFileName(device), "r");
    char line[254];
    return findLineAndClose(saved, stampMarker, line, sizeof line) && readStampValue(line, onCard);
}

int isDeviceToBeUpdatedForVPDV0Comparison(const Device* device, const char* flashTool) {
    if (flashTool == nullptr || device == nullptr) {
        return 0;
    }
    const char* build = getBuildVer();
    char onCard[stampValueSize];
    if (!readSavedStamp(device, onCard)) {
        return 0;
    }
    const int force = need_to_force_update(onCard, build);
    char text[messageSize];
    snprintf(text, sizeof text,
             "Comparing \"%s\" (on card) with \"%s\" (current build) need_to_force_update=%d\n",
             onCard, build == nullptr ? "" : build, force);
    puts(text);
    writetoLog(text, true);
    fflush(stdout);
    return force;
}

}  // namespace fwup
