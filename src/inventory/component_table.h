// The firmware components: how each is found in a port's inventory, where the
// version table shows it, whether and how it is flashed, and the names of the
// images. The blocks of iSCSI configurations, which are no components.
#pragma once

#include <cstddef>

#include "inventory/device.h"

namespace fwup {

constexpr int needlesPerComponent = 4;

enum ComponentTrait : unsigned {
    alwaysForced = 1U << 0U,
    alwaysBackedUp = 1U << 1U,
    // Its line holds the MBA flags, and either of them forces its flash.
    hasMbaFlags = 1U << 2U,
    // With bool_iscsi_fix, the iSCSI configuration blocks are deleted before its flash.
    replacesIscsiBlocks = 1U << 3U,
    // Its version is read and shown, but no image is made for it alone.
    neverFlashed = 1U << 4U,
};

struct Component {
    VersionField Device::*version;
    const char* name;  // in messages; names the image and the utility's option, too
    unsigned traits;   // of ComponentTrait
    // What a line of the inventory holds, in the order they are tried. Without any, the component
    // is never found there and so never flashed.
    const char* needles[needlesPerComponent];
    const char* option = nullptr;      // the utility's, where it isn't the name
    const char* fcodeImage = nullptr;  // the image's part for an adapter with FCODE
    const char* vtNcsiName = nullptr;  // the component flashed instead under bool_vt_ncsi
};

// In the order of the flashes.
inline constexpr Component components[] = {
    {&Device::bootVer, "bc", alwaysBackedUp, {" bc1 ", " BC1 "}},
    {&Device::mfwVer, "mfw1", alwaysForced, {" mfw1 ", " MFW1 "}},
    {&Device::ipmiVer, "ipmi", 0, {" ipmi ", " IPMI "}},
    {&Device::asfVer, "asf", 0, {}},
    {&Device::pxeVer, "mba", hasMbaFlags, {" mba ", " MBA "}, nullptr, "mbaf"},
    {&Device::l2Ver, "l2t", 0, {"L2T"}},
    {&Device::umpVer, "ump", 0, {" UMP "}},
    {&Device::ncsiVer, "ncsi", 0, {"NCSI", "NCSI_E", "NCSI_C", "NCSI_X"}},
    {&Device::imfwVer, "imfw", 0, {}, nullptr, nullptr, "ncsi"},
    {&Device::iscsiVer, "ib", alwaysForced | replacesIscsiBlocks, {"ISCSI"}, "ib_ipv4n6"},
    {&Device::efiVer, "efi", neverFlashed, {"EFI"}},
    {&Device::fcodeVer, "fcode", neverFlashed, {"FCODE"}},
};
constexpr size_t componentCount = sizeof components / sizeof components[0];

// A column of the version table.
struct VersionColumn {
    VersionField Device::*version;
    const char* heading;
    const char* rule;  // below the heading
};

// From left to right.
inline constexpr VersionColumn versionColumns[] = {
    {&Device::bootVer, "BOOT", "----"}, {&Device::mfwVer, "MFW", "----"},
    {&Device::ipmiVer, "IPMI", "----"}, {&Device::asfVer, "ASF", "---"},
    {&Device::pxeVer, "PXE", "---"},    {&Device::umpVer, "UMP", "---"},
    {&Device::ncsiVer, "NCSI", "---"},  {&Device::iscsiVer, "iSCSI", "---"},
    {&Device::efiVer, "EFI", "---"},    {&Device::imfwVer, "IMFW", "---"},
    {&Device::l2Ver, "L2", "---"},
};
constexpr size_t versionColumnCount = sizeof versionColumns / sizeof versionColumns[0];

// The column of a component; versionColumnCount when the table doesn't show it.
constexpr size_t columnOf(const Component& component) {
    size_t column = 0;
    while (column < versionColumnCount && versionColumns[column].version != component.version) {
        column++;
    }
    return column;
}

// What no column shows could be left unwritten without anybody noticing.
constexpr bool showsAllThatIsFlashed() {
    for (const Component& component : components) {
        if ((component.traits & neverFlashed) == 0 && columnOf(component) == versionColumnCount) {
            return false;
        }
    }
    return true;
}
static_assert(showsAllThatIsFlashed(), "a component that is flashed lacks its column");

// A block with an iSCSI boot configuration.
struct IscsiBlock {
    const char* name;   // as the utility names it
    const char* label;  // in the message about its removal
    // The trailing blank keeps the first block's needles from finding the second's line.
    const char* needles[2];
    const char* versionLabel;  // before its version; padded, so that the two lines align
};

inline constexpr IscsiBlock iscsiBlocks[] = {
    {"isb_cfg", "cfg", {"isb_cfg ", "ISB_CFG "}, "ISB_CFG "},
    {"isb_cfg2", "cfg2", {"isb_cfg2 ", "ISB_CFG2 "}, "ISB_CFG2"},
};

// False for a null component, too.
inline bool hasTrait(const Component* component, ComponentTrait trait) {
    return component != nullptr && (component->traits & trait) != 0;
}

// The row of a component's name, in any case; null when there is none.
const Component* findComponent(const char* name);

// Room for device ID, image part and ".bin".
constexpr int imageNameSize = 64;

// Names the image of a device ID and an image part, such as "3C01bc.bin".
void writeImageName(char (&image)[imageNameSize], const char* did, const char* part);

}  // namespace fwup
