// Switches the management firmware of every port through the utility's "cfg"
// verb. Nothing is flashed; outcomes are reported and the walk goes on.
#pragma once

#include <cstdint>

#include "inventory/device_list.h"

namespace fwup {

// 1 in a run that turns NCSI on or off.
extern uint8_t bool_set_ncsi;

// Turns off IPMI, UMP and NCSI where a port's inventory shows them.
void disableManagementFirmware(const DeviceHeadTail* list, const char* flashTool);

// Reports the outcome of one such command by the utility's exit code: 0 is
// success, 95 success that needs a reboot, anything else a failure.
void disable_management_firmware_log(int code, const char* component, const char* mac);

// Turns NCSI on or off on every port that has it.
void set_ncsi_firmware(const DeviceHeadTail* list, const char* flashTool, bool enable);

}  // namespace fwup
