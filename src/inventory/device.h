// One adapter port as the tool sees it. Discovery creates it; the inventory
// and the management library fill it in; everything else only reads it.
#pragma once

#include <cstdint>

namespace fwup {

// Version text, at most 14 characters; "NA" when the component is absent.
using VersionField = char[15];

struct Device {
    char didStr[12];    // as the flash utility lists it; prefix of the image names
    uint32_t deviceId;  // PCI identity, from the management library
    uint32_t vendorId;
    uint32_t subsysId;
    uint32_t subsysVendorId;
    int32_t pciBus;  // -1 until the library supplies it
    uint32_t pciFunction;
    uint32_t pciDevice;
    char mac[20];  // names the port to the utility, and its inventory file
    VersionField mfwVer;
    VersionField bootVer;
    VersionField ipmiVer;
    VersionField asfVer;
    VersionField pxeVer;
    VersionField umpVer;
    VersionField ncsiVer;
    VersionField imfwVer;
    VersionField iscsiVer;
    VersionField efiVer;
    VersionField fcodeVer;
    VersionField l2Ver;
    VersionField chipName;
    VersionField driverVer;  // operating-system driver; "NA" when none is bound
    uint8_t hasMgmtFw;       // 1 when boot code or management firmware is listed
    uint8_t mbaLegacy;       // 1 when the MBA line lacks the PCI 3.0 marking
    uint8_t mbaHostClp;      // 1 when the MBA line has "HOSTPCI30_CLP"
    Device* next;
};

// Copies `text` into a version field, cut to its 14 characters. No more of it is
// read than that, so it need not be terminated behind them.
void setVersion(VersionField& field, const char* text);

// True unless the field reads "NA", in any case.
bool isPresent(const VersionField& field);

// The eligibility tests: 2 when no driver is bound (the adapter is down), or
// when neither boot code nor management firmware is there (the installed
// firmware is corrupted); 0 otherwise. An empty field counts as present.
int is_valid_driver(const Device* device);
int is_valid_firmware(const Device* device);

}  // namespace fwup
