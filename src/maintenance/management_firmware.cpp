#include "maintenance/management_firmware.h"

#include <cstdio>
#include <cstring>

#include "log/command_runner.h"
#include "log/flash_tool_code.h"
#include "log/update_log.h"

namespace fwup {

uint8_t bool_set_ncsi = 0;

// NCSI answers to the generic switch.
static constexpr char ncsiSwitch[] = "mgmt";

struct ManagementComponent {
    VersionField Device::*version;
    const char* label;
    const char* cfgSwitch;
};

// In the order they are turned off.
static const ManagementComponent managementComponents[] = {
    {&Device::ipmiVer, "IPMI", "ipmi"},
    {&Device::umpVer, "UMP", "ump"},
    {&Device::ncsiVer, "NCSI", ncsiSwitch},
};

// An empty field counts as listed.
static bool isListed(const VersionField& field) {
    return strcmp(field, "NA") != 0;
}

// Breaks the line in the log only: on the console the outcome completes it.
static void endProgressLine() {
    writetoLog("\n", false);
    fflush(stdout);
}

static int runCfg(const Device* device, const char* flashTool, const char* cfgSwitch, int value) {
    return convert_return_code(
        runCommand("%s %s cfg -%s %d >>%s", flashTool, device->mac, cfgSwitch, value, szFwuplog));
}

// Shows the outcome and logs a success. False for a failure, whose message
// follows. `stem` is that of the verb, in the case that the message has it.
static bool reportSuccess(int code, const char* stem, const char* component, const char* mac) {
    switch (code) {
        case codeSuccess:
            writeMessage(false,
                         "*** Successfully %sed management firmware (%s) on device %s ***\n\n",
                         stem, component, mac);
            puts("\t---> successful");
            return true;
        case codeRebootRequired:
            writeMessage(
                false,
                "*** Successfully %sed management firmware (%s) on device %s (reboot required) ***\n\n",
                stem, component, mac);
            puts("\t---> successful (reboot required)");
            return true;
        default: puts("\t---> failed"); return false;
    }
}

void disable_management_firmware_log(int code, const char* component, const char* mac) {
    if (!reportSuccess(code, "disabl", component, mac)) {
        writeMessage(false, " !!! Error disabling management firmware (%s) on device %s !!!\n\n",
                     component, mac);
    }
}

void disableManagementFirmware(const DeviceHeadTail* list, const char* flashTool) {
    for (const Device* device = firstDevice(list); device != nullptr; device = device->next) {
        for (const ManagementComponent& component : managementComponents) {
            if (!isListed(device->*component.version)) {
                continue;
            }
            writeMessage(true, "Disabling management firmware (%s) for %s", component.label,
                         device->mac);
            endProgressLine();
            const int code = runCfg(device, flashTool, component.cfgSwitch, 0);
            disable_management_firmware_log(code, component.label, device->mac);
        }
    }
}

void set_ncsi_firmware(const DeviceHeadTail* list, const char* flashTool, bool enable) {
    const char* stem = enable ? "Enabl" : "Disabl";
    for (const Device* device = firstDevice(list); device != nullptr; device = device->next) {
        if (!isListed(device->ncsiVer)) {
            continue;
        }
        writeMessage(true, "%sing management firmware (NCSI) for %s", stem, device->mac);
        endProgressLine();
        const int code = runCfg(device, flashTool, ncsiSwitch, enable ? 1 : 0);
        if (!reportSuccess(code, stem, "NCSI", device->mac)) {
            writeMessage(false, " !!! Error %sing management firmware (NSCI) on device %s !!!\n\n",
                         stem, device->mac);
        }
    }
}

}  // namespace fwup
