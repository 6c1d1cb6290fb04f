// The flash of one firmware component of one port.
#pragma once

#include <cstdint>

#include "inventory/device.h"

namespace fwup {

// 1 when every flash command carries the force switch.
extern uint8_t bForce;

// Flashes `component` ("bc", "mfw1", ...; case does not count) from its image
// in the current directory and reports the outcome. True when it was flashed
// or needed no flash; false on a missing image or a failure. Nothing is
// retried, and "nv.bak" is gone afterwards.
bool updateFirmware(const Device* device, const char* component, const char* flashTool);

}  // namespace fwup
