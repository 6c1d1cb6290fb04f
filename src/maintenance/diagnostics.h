// Operations that read or verify adapters and never flash them.
#pragma once

#include "inventory/device_list.h"

namespace fwup {

// Writes the response file "y", which confirms a CRC check. False, after a
// message, when it cannot be written.
bool create_yes_response_file();

// Has the flash utility verify the firmware of each port of the list and
// reports each outcome. A port without driver is reported and not checked.
void perform_crc_check(const DeviceHeadTail* list, const char* flashTool);

// Shows every port's inventory file.
void perform_dir_command(const DeviceHeadTail* list);

// Shows the versions of the iSCSI boot configuration blocks that each port's
// inventory lists; "NA" for a block without version.
void display_iscsicfg_versions(const DeviceHeadTail* list);

}  // namespace fwup
