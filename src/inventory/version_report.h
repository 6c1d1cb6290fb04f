// The table of installed firmware versions, one row a port.
#pragma once

#include "inventory/device_list.h"

namespace fwup {

// Writes the table to log and console. A null or empty list gives the two
// heading lines only.
void displayFwVersions(const DeviceHeadTail* list);

}  // namespace fwup
