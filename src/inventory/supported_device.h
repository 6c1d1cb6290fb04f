// The devices that this tool updates.
#pragma once

namespace fwup {

struct SupportedDevice {
    const char* did;    // as the flash utility lists it: four hexadecimal digits, upper case
    const char* label;  // of the chip, four or five characters
};

// Ends with a row whose `did` is null.
extern const SupportedDevice SUPDID[];

// Room for any label.
constexpr int chipLabelSize = 8;

// True for exactly a device ID of SUPDID; case counts.
bool is_did_supported(const char* did);

// Writes the label that the version table shows for the device ID `did`, a
// hexadecimal text, into `label` (at least chipLabelSize bytes); "unknown" for
// an ID that has none.
void convertDIDtoName(const char* did, char* label);

}  // namespace fwup
