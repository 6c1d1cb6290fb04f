// The update pass: every adapter once, through the first of its ports that the
// list holds.
#pragma once

#include <cstdint>

#include "inventory/device_list.h"

namespace fwup {

// 1 to delete the iSCSI boot configurations before the iSCSI flash.
extern uint8_t bool_iscsi_fix;
// 1 to flash the "ncsi" image in place of "imfw".
extern uint8_t bool_vt_ncsi;

constexpr int passNoBuildVersion = -1;

// Stamps and flashes the adapters of the list. The check list must hold their
// buses. Returns the pass status: exitClean, exitErrors or exitAdapterDown,
// each failure overwriting the one before, or passNoBuildVersion, which ends
// the pass at once, as does a stamp that cannot be read (exitErrors). `family`
// appears in messages.
int updateDevices(const DeviceHeadTail* list, const char* flashTool, const char* family);

}  // namespace fwup
