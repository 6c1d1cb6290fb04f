#include "inventory/firmware_inventory.h"

#include <cstdio>
#include <cstring>

#include "inventory/chip_label.h"
#include "inventory/version_word.h"
#include "log/command_runner.h"
#include "log/update_log.h"

namespace fwup {

using VersionMember = VersionField Device::*;

// Every version that an inventory resets.
static const VersionMember inventoryVersions[] = {
    &Device::bootVer,  &Device::mfwVer, &Device::ipmiVer,  &Device::asfVer,
    &Device::pxeVer,   &Device::umpVer, &Device::ncsiVer,  &Device::imfwVer,
    &Device::iscsiVer, &Device::efiVer, &Device::fcodeVer, &Device::l2Ver,
};

// Without a line that has one of these, nothing of the port is read.
static const char* const managementNeedles[] = {"BC1", "MFW", "MFW1", "mfw1"};

constexpr int needlesPerLookup = 4;

struct Lookup {
    VersionMember version;
    const char* needles[needlesPerLookup];  // in the order they are tried; null where fewer
};

static const Lookup lookups[] = {
    {&Device::bootVer, {" bc1 ", " BC1 "}},
    {&Device::mfwVer, {" mfw1 ", " MFW1 "}},
    {&Device::ipmiVer, {" ipmi ", " IPMI "}},
    {&Device::umpVer, {" UMP "}},
    {&Device::pxeVer, {" mba ", " MBA "}},
    {&Device::ncsiVer, {"NCSI", "NCSI_E", "NCSI_C", "NCSI_X"}},
    {&Device::iscsiVer, {"ISCSI"}},
    {&Device::efiVer, {"EFI"}},
    {&Device::fcodeVer, {"FCODE"}},
    {&Device::l2Ver, {"L2T"}},
};
constexpr size_t lookupCount = sizeof lookups / sizeof lookups[0];

static FILE* openInventory(const Device* device) {
    FILE* inventory = fopen(device->mac, "r");
    if (inventory == nullptr) {
        writeMessage(true, "Error 9: Cannot access %s information file.\n", device->mac);
    }
    return inventory;
}

bool IsFwTypePresent(const Device* device, const char* needle, char* line) {
    FILE* inventory = openInventory(device);
    if (inventory == nullptr) {
        return false;
    }
    char piece[inventoryLineSize];
    bool found = false;
    while (!found && fgets(piece, sizeof piece, inventory) != nullptr) {
        found = strstr(piece, needle) != nullptr;
    }
    if (found) {
        memcpy(line, piece, strlen(piece) + 1);
    }
    fclose(inventory);
    return found;
}

static bool hasManagementFirmware(const Device* device) {
    char line[inventoryLineSize];
    for (const char* needle : managementNeedles) {
        if (IsFwTypePresent(device, needle, line)) {
            return true;
        }
    }
    return false;
}

// The line that one lookup has selected so far.
struct SelectedLine {
    int needle;  // its place in the lookup; needlesPerLookup when there is no line
    char text[inventoryLineSize];
};

// Of two lines, that of the earlier needle counts; of one needle's, the first.
static void offerPiece(const Lookup& lookup, const char* piece, SelectedLine* selected) {
    for (int i = 0; i < selected->needle; i++) {
        if (lookup.needles[i] != nullptr && strstr(piece, lookup.needles[i]) != nullptr) {
            selected->needle = i;
            memcpy(selected->text, piece, strlen(piece) + 1);
        }
    }
}

// Selects the lines of all lookups in one reading: hundreds of ports with a
// dozen lookups each would open their files ten thousand times.
static void selectLines(const Device* device, SelectedLine (&selected)[lookupCount]) {
    for (SelectedLine& line : selected) {
        line.needle = needlesPerLookup;
    }
    FILE* inventory = openInventory(device);
    char piece[inventoryLineSize];
    while (inventory != nullptr && fgets(piece, sizeof piece, inventory) != nullptr) {
        for (size_t i = 0; i < lookupCount; i++) {
            offerPiece(lookups[i], piece, &selected[i]);
        }
    }
    if (inventory != nullptr) {
        fclose(inventory);
    }
}

static void setMbaFlags(Device* device, const char* line) {
    if (strstr(line, "PCI30 MBA") == nullptr && strstr(line, "HOSTPCI30_CLP MBA") == nullptr) {
        device->mbaLegacy = 1;
    }
    if (strstr(line, "HOSTPCI30_CLP") != nullptr) {
        device->mbaHostClp = 1;
    }
}

static void readVersion(Device* device, const Lookup& lookup, char* line) {
    if (lookup.version == &Device::pxeVer) {
        setMbaFlags(device, line);
    }
    size_t length = 0;
    if (findVersionWord(line, &length) != nullptr) {
        parseForVersion(line);
        setVersion(device->*lookup.version, line);
    }
}

void readInventory(Device* device) {
    for (const VersionMember version : inventoryVersions) {
        setVersion(device->*version, "NA");
    }
    convertDIDtoName(device->didStr, device->chipName);
    device->hasMgmtFw = hasManagementFirmware(device) ? 1 : 0;
    if (device->hasMgmtFw == 0) {
        return;
    }
    SelectedLine selected[lookupCount];
    selectLines(device, selected);
    for (size_t i = 0; i < lookupCount; i++) {
        if (selected[i].needle < needlesPerLookup) {
            readVersion(device, lookups[i], selected[i].text);
        }
    }
}

void getFwVersions(DeviceHeadTail* list, const char* flashTool) {
    for (Device* device = firstDevice(list); device != nullptr; device = device->next) {
        runCommand("%s %s dir >%s", flashTool, device->mac, device->mac);
        readInventory(device);
    }
}

}  // namespace fwup
