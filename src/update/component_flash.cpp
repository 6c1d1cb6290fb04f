#include "update/component_flash.h"

#include <strings.h>

#include <cstdio>

#include "inventory/firmware_inventory.h"
#include "log/command_runner.h"
#include "log/exit_code.h"
#include "log/file_util.h"
#include "log/update_log.h"
#include "update/component_table.h"
#include "version/build_stamp.h"

namespace fwup {

uint8_t bForce = 0;

static const char* const backupFile = "nv.bak";

static bool isComponent(const char* component, const char* name) {
    return strcasecmp(component, name) == 0;
}

// An adapter with FCODE takes the boot image that carries it.
static bool hasFcode(const Device* device) {
    char line[inventoryLineSize];
    return IsFwTypePresent(device, "fcode", line) || IsFwTypePresent(device, "Fcode", line) ||
           IsFwTypePresent(device, "FCODE", line);
}

static void nameImage(const Device* device, const char* component, char (&image)[imageNameSize]) {
    const bool withFcode = isComponent(component, "mba") && hasFcode(device);
    writeImageName(image, device->didStr, withFcode ? fcodeImagePart : component);
}

static bool isForced(const Device* device, const char* component, bool stampForces) {
    const bool oldBootImage =
        isComponent(component, "mba") && (device->mbaLegacy != 0 || device->mbaHostClp != 0);
    return bForce != 0 || stampForces || oldBootImage || isComponent(component, "mfw1") ||
           isComponent(component, "ib");
}

static int flash(const Device* device, const char* component, const char* image,
                 const char* flashTool, bool forced) {
    const bool backedUp = device->hasMgmtFw == 0 || isComponent(component, "bc");
    const char* option = isComponent(component, "ib") ? "ib_ipv4n6" : component;
    return convert_return_code(runCommand("%s %s upgrade -noreset %s-%s %s%s >>%s", flashTool,
                                          device->mac, forced ? "-F " : "", option, image,
                                          backedUp ? " nv.bak" : "", szFwuplog));
}

static bool reportOutcome(int code, bool stampForces, const Device* device, const char* component,
                          const char* image) {
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
                         component, device->mac, image);
            showMarker("\t---> Update failed");
            return false;
    }
}

static bool flashImage(const Device* device, const char* component, const char* flashTool,
                       bool stampForces) {
    char image[imageNameSize];
    nameImage(device, component, image);
    writeMessage(true, "Updating %s using file %s", device->mac, image);
    writetoLog("\n", false);
    fflush(stdout);
    if (!fileExist(image)) {
        showMarker("\t---> Update failed");
        writeMessage(
            false,
            " !!! Error updating %s firmware on device %s using file %s. File not found !!!\n\n",
            component, device->mac, image);
        return false;
    }
    const bool forced = isForced(device, component, stampForces);
    const int code = flash(device, component, image, flashTool, forced);
    return reportOutcome(code, stampForces, device, component, image);
}

bool updateFirmware(const Device* device, const char* component, const char* flashTool) {
    const bool stampForces = isDeviceToBeUpdatedForVPDV0Comparison(device, flashTool) == 1;
    const bool updated = flashImage(device, component, flashTool, stampForces);
    deleteFile(backupFile);
    return updated;
}

}  // namespace fwup
