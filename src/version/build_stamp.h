// The package's build version, and the stamp of it that each adapter carries
// in its VPD-V0 field. The stamp that a card held before this run decides
// whether its components must be flashed by force.
#pragma once

#include "inventory/device.h"

namespace fwup {

// The first line of BuildVersion.txt, at most 48 characters, without its line
// feed; null, after a message on standard error, when the file cannot be
// opened. The text is static: it stands until the next call.
char* getBuildVer();

// The name of the file that keeps a card's old stamp during its update; ""
// for a null device. The text is static: it stands until the next call.
char* getVPDV0TempFileName(const Device* device);

// Saves the card's VPD-V0 as it is now. 0, or 1 when the utility failed or an
// argument is null.
int memorizeVPDVOForAdapter(const Device* device, const char* flashTool);

// Writes `buildVer` into the card's VPD-V0 and reports the outcome, which
// changes nothing else.
void writeVPDV0ForAdapter(const Device* device, const char* flashTool, const char* buildVer);

// Compares the saved stamp with the build version: 1 when the flash must be
// forced, 0 when not, when nothing was saved, or for a null argument.
int isDeviceToBeUpdatedForVPDV0Comparison(const Device* device, const char* flashTool);

}  // namespace fwup
