// The label that the version table shows for a port's chip.
#pragma once

namespace fwup {

// Room for any label.
constexpr int chipLabelSize = 8;

// Writes the label of the device ID `did`, a hexadecimal text, into `label`
// (at least chipLabelSize bytes); "unknown" for an ID that has none.
void convertDIDtoName(const char* did, char* label);

}  // namespace fwup
