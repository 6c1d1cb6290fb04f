// The components that an update flashes, and the names of their images.
#pragma once

#include <cstdio>

#include "inventory/device.h"

namespace fwup {

struct PassComponent {
    VersionField Device::*version;  // the component is flashed when this is present
    const char* name;
    const char* vtNcsiName;  // what bool_vt_ncsi flashes instead
};

// In the order of the flashes.
inline constexpr PassComponent passComponents[] = {
    {&Device::bootVer, "bc", "bc"},     {&Device::mfwVer, "mfw1", "mfw1"},
    {&Device::ipmiVer, "ipmi", "ipmi"}, {&Device::asfVer, "asf", "asf"},
    {&Device::pxeVer, "mba", "mba"},    {&Device::l2Ver, "l2t", "l2t"},
    {&Device::umpVer, "ump", "ump"},    {&Device::ncsiVer, "ncsi", "ncsi"},
    {&Device::imfwVer, "imfw", "ncsi"}, {&Device::iscsiVer, "ib", "ib"},
};

// The image of an "mba" that carries FCODE. Every other component's image goes
// by the component's own name.
inline constexpr char fcodeImagePart[] = "mbaf";

// Room for device ID, image part and ".bin".
constexpr int imageNameSize = 64;

// Names the image of a device ID and an image part, such as "3C01bc.bin".
inline void writeImageName(char (&image)[imageNameSize], const char* did, const char* part) {
    snprintf(image, sizeof image, "%s%s.bin", did, part);
}

}  // namespace fwup
