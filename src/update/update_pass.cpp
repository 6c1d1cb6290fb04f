#include "update/update_pass.h"

#include <cstdio>
#include <cstdlib>

#include "inventory/check_list.h"
#include "inventory/component_table.h"
#include "log/command_runner.h"
#include "log/flash_tool_code.h"
#include "log/update_log.h"
#include "maintenance/diagnostics.h"
#include "update/component_flash.h"
#include "update/exit_status.h"
#include "update/yb_repair.h"
#include "version/build_stamp.h"

namespace fwup {

uint8_t bool_iscsi_fix = 0;
uint8_t bool_vt_ncsi = 0;

static void deleteIscsiBlocks(const Device* device, const char* flashTool) {
    for (const IscsiBlock& block : iscsiBlocks) {
        const int code = convert_return_code(
            runCommand("%s %s dir -delete %s >>%s", flashTool, device->mac, block.name, szFwuplog));
        if (code == codeSuccess || code == codeRebootRequired) {
            writeMessage(true, "*** iscsi %s removed successfully ***\n", block.label);
        } else {
            writeMessage(true, "*** iscsi %s removal failed ***\n", block.label);
        }
    }
}

static int flashComponents(const Device* device, const char* flashTool, int status) {
    for (const Component& component : components) {
        if (hasTrait(&component, neverFlashed) || !isPresent(device->*component.version)) {
            continue;
        }
        if (hasTrait(&component, replacesIscsiBlocks) && bool_iscsi_fix != 0) {
            deleteIscsiBlocks(device, flashTool);
        }
        const bool isReplaced = bool_vt_ncsi == 1 && component.vtNcsiName != nullptr;
        const char* name = isReplaced ? component.vtNcsiName : component.name;
        if (!updateFirmware(device, name, flashTool)) {
            status = exitErrors;
        }
    }
    return status;
}

static int flashIfEligible(const Device* device, const char* flashTool, int status) {
    if (is_valid_driver(device) == 2) {
        if (bSilent != 1) {
            printf("Updating %s failed, adapter is down\t---> Update failed\n", device->mac);
        }
        writeMessage(false, "!!! Error updating firmware on %s, adapter is down !!!\n",
                     device->mac);
        return exitAdapterDown;
    }
    if (is_valid_firmware(device) == 2) {
        if (bSilent != 1) {
            printf("Updating %s failed, firmware corrupted\t---> Update failed\n", device->mac);
        }
        writeMessage(
            false,
            "!!! Error updating firmware on %s because the installed firmware is corrupted. Contact Marvek support. !!!\n",
            device->mac);
        return exitErrors;
    }
    return flashComponents(device, flashTool, status);
}

// Saves the card's old stamp and writes the new one. False, with the pass
// status to end with, when the pass cannot go on.
static bool stampDevice(const Device* device, const char* flashTool, int* status) {
    const char* buildVer = getBuildVer();
    if (buildVer == nullptr) {
        *status = passNoBuildVersion;
        return false;
    }
    printf("\n\nBuild Version is %s\n\n", buildVer);
    if (memorizeVPDVOForAdapter(device, flashTool) != 0) {
        *status = exitErrors;
        return false;
    }
    writeVPDV0ForAdapter(device, flashTool, buildVer);
    return true;
}

// A list of its own for one port. The port's inventory file belongs to the
// list of the discovery and outlives this one.
static bool checkOneDevice(const Device* device, const char* flashTool, const char* family) {
    DeviceHeadTail* list = createList();
    if (list == nullptr) {
        writeMessage(true, "Error! Unable to build %s device list.\n", family);
        return false;
    }
    addDevicetoList(list, device->didStr, device->mac, static_cast<unsigned int>(-1));
    perform_crc_check(list, flashTool);
    free(list->head);
    free(list);
    return true;
}

// True when the pass goes on with the next port. From the first failure on,
// every port is checked and no bus is marked, whatever its own outcome.
static bool updateDevice(const Device* device, const char* flashTool, const char* family,
                         int* status) {
    writeMessage(false, "\nThe device driver version for %s is %s.\n", device->mac,
                 device->driverVer);
    repairYb(device, flashTool);
    if (!stampDevice(device, flashTool, status)) {
        return false;
    }
    *status = flashIfEligible(device, flashTool, *status);
    if (*status != exitClean) {
        if (!checkOneDevice(device, flashTool, family)) {
            *status = exitErrors;
            return false;
        }
    } else {
        UpdateCheckList(device->pciBus);
    }
    deleteFile(getVPDV0TempFileName(device));
    return true;
}

int updateDevices(const DeviceHeadTail* list, const char* flashTool, const char* family) {
    writeMessage(true, "\nUpdating Kelvane %s adapters.\n", family);
    int status = exitClean;
    for (const Device* device = firstDevice(list); device != nullptr; device = device->next) {
        if (IsUpdatedBefore(device->pciBus)) {
            continue;
        }
        if (!updateDevice(device, flashTool, family, &status)) {
            break;
        }
    }
    return status;
}

}  // namespace fwup
