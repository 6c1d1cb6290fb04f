// The firmware inventory of a port: the utility's directory of the adapter's
// memory, kept in a file named by the port's MAC, and the versions found there.
#pragma once

#include "inventory/device_list.h"

namespace fwup {

// Room for a line of an inventory file; a longer one arrives in pieces.
constexpr int inventoryLineSize = 255;

// Has the utility at `flashTool` write every port's inventory file, and reads
// each. A failed command shows as versions that stay "NA".
void getFwVersions(DeviceHeadTail* list, const char* flashTool);

// Sets the versions, the chip label and the inventory flags of one port from
// its inventory file.
void readInventory(Device* device);

// Copies the first line of the port's inventory file that contains `needle`
// (case counts) into `line` (inventoryLineSize bytes), with its line feed.
// False, and `line` untouched, when there is none, or when the file cannot be
// opened, which is reported.
bool IsFwTypePresent(const Device* device, const char* needle, char* line);

// Copies a port's inventory file, under a heading, to the log and, with
// `echo`, to the console. A file that cannot be opened is reported on both.
void write_device_info_file_to_log(const char* fileName, bool echo);

}  // namespace fwup
