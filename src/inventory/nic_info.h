// The PCI identity and the driver version of each port, from the adapter
// maker's management library.
#pragma once

#include "inventory/device_list.h"

namespace fwup {

// Asks the library for all physical NICs and copies identity and driver
// version into the ports with the same MAC. A port that the library does not
// report is left as it is. False when the NICs' summaries could not be had;
// only a failed allocation is reported here.
bool get_nic_info(DeviceHeadTail* list);

}  // namespace fwup
