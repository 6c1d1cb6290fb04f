// Finds the supported adapter ports by the flash utility's own listing.
#pragma once

#include "inventory/device_list.h"

namespace fwup {

// Room for the path of the flash utility.
constexpr int flashToolSize = 25;

// Lists the ports and reads each one's firmware inventory. `family` appears in
// messages only; `flashTool` is the caller's buffer of flashToolSize, which
// receives the utility's path. The response file "q" must exist. Null, after a
// message, when there is no utility, no listing or no supported port; a list
// that is returned is never empty and belongs to the caller.
DeviceHeadTail* getDevices(const char* family, char* flashTool);

// Writes the utility's path and returns true when a file is there; reports it
// otherwise.
bool setKORBtool(const char* family, char* flashTool);

}  // namespace fwup
