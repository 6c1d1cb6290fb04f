// The repair of the VPD field YB on OEM adapters that must carry one fixed
// value there.
#pragma once

#include "inventory/device.h"

namespace fwup {

// For a port with one of the two OEM subsystem IDs: reads the field and writes
// the right value when it differs, once, and reports the outcome on console
// (even when silent) and log. Does nothing for other ports.
void repairYb(const Device* device, const char* flashTool);

}  // namespace fwup
