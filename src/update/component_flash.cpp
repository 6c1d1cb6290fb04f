#include "update/component_flash.h"

#include <cstdio>

#include "inventory/component_table.h"
#include "inventory/firmware_inventory.h"
#include "log/command_runner.h"
#include "log/file_util.h"
#include "log/flash_tool_code.h"
#include "log/update_log.h"
#include "version/build_stamp.h"

namespace fwup {

uint8_t bForce = 0;

static const char* const backupFile = "nv.bak";

// What is to be flashed. A name without a row in the table has no peculiarities.
struct Target {
    const Device* device;
    const char* component;  // as the caller names it
    const Component* row;   // or null
    char image[imageNameSize];
};

// An adapter with FCODE takes the boot image that carries it.
static bool hasFcode(const Device* device) {
    char line[inventoryLineSize];
    return IsFwTypePresent(device, "fcode", line) || IsFwTypePresent(device, "Fcode", line) ||
           IsFwTypePresent(device, "FCODE", line);
}

static Target makeTarget(const Device* device, const char* component) {
    Target target = {device, component, findComponent(component), ""};
    const char* fcodeImage = target.row == nullptr ? nullptr : target.row->fcodeImage;
    const bool withFcode = fcodeImage != nullptr && hasFcode(device);
    writeImageName(target.image, device->didStr, withFcode ? fcodeImage : component);
    return target;
}

static bool isForced(const Target& target, bool stampForces) {
    const bool oldBootImage = hasTrait(target.row, hasMbaFlags) &&
                              (target.device->mbaLegacy != 0 || target.device->mbaHostClp != 0);
    return bForce != 0 || stampForces || oldBootImage || hasTrait(target.row, alwaysForced);
}

static int flash(const Target& target, const char* flashTool, bool forced) {
    const bool backedUp = target.device->hasMgmtFw == 0 || hasTrait(target.row, alwaysBackedUp);
    const char* option = target.row == nullptr ? nullptr : target.row->option;
    return convert_return_code(
        runCommand("%s %s upgrade -noreset %s-%s %s%s%s >>%s", flashTool, target.device->mac,
                   forced ? "-F " : "", option == nullptr ? target.component : option, target.image,
                   backedUp ? " " : "", backedUp ? backupFile : "", szFwuplog));
}

static bool reportOutcome(int code, bool stampForces, const Target& target) {
    if (code == codeNotApplied && !stampForces) {
        writetoLog("*** No update needed because need_to_force_update=0 ***\n\n", false);
        showMarker("\t---> No update needed");
        return true;
    }
    switch (code) {
        case codeSuccess:
            writetoLog("*** Update successful ***\n\n", false);
            showMarker("\t---> Update successful");
            return true;
        case codeNoUpdateNeeded:
            writetoLog("*** No update needed ***\n\n", false);
            showMarker("\t---> No update needed");
            return true;
        case codeRebootRequired:
            writetoLog("*** Update successful, reboot needed ***\n\n", false);
            showMarker("\t---> Update successful, reboot needed ");
            return true;
        default:
            writeMessage(false,
                         " !!! Error updating %s firmware on device %s using file %s !!!\n\n",
                         target.component, target.device->mac, target.image);
            showMarker("\t---> Update failed");
            return false;
    }
}

static bool flashImage(const Target& target, const char* flashTool, bool stampForces) {
    writeMessage(true, "Updating %s using file %s", target.device->mac, target.image);
    writetoLog("\n", false);
    fflush(stdout);
    if (!fileExist(target.image)) {
        showMarker("\t---> Update failed");
        writeMessage(
            false,
            " !!! Error updating %s firmware on device %s using file %s. File not found !!!\n\n",
            target.component, target.device->mac, target.image);
        return false;
    }
    const int code = flash(target, flashTool, isForced(target, stampForces));
    return reportOutcome(code, stampForces, target);
}

bool updateFirmware(const Device* device, const char* component, const char* flashTool) {
    const bool stampForces = isDeviceToBeUpdatedForVPDV0Comparison(device, flashTool) == 1;
    const bool updated = flashImage(makeTarget(device, component), flashTool, stampForces);
    deleteFile(backupFile);
    return updated;
}

}  // namespace fwup
