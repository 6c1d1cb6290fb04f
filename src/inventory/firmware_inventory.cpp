#include "inventory/firmware_inventory.h"

#include <cstdio>
#include <cstring>

#include "inventory/component_table.h"
#include "inventory/supported_device.h"
#include "inventory/version_word.h"
#include "log/command_runner.h"
#include "log/file_util.h"
#include "log/update_log.h"

namespace fwup {

// Without a line that has one of these, nothing of the port is read.
static const char* const managementNeedles[] = {"BC1", "MFW", "MFW1", "mfw1"};

static FILE* openInventory(const char* mac) {
    FILE* inventory = fopen(mac, "r");
    if (inventory == nullptr) {
        writeMessage(true, "Error 9: Cannot access %s information file.\n", mac);
    }
    return inventory;
}

bool IsFwTypePresent(const Device* device, const char* needle, char* line) {
    char piece[inventoryLineSize];
    const bool found = findLineAndClose(openInventory(device->mac), needle, piece, sizeof piece);
    if (found) {
        memcpy(line, piece, strlen(piece) + 1);
    }
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

// The line that one component has selected so far.
struct SelectedLine {
    int needle;  // its place among the component's; needlesPerComponent when there is no line
    char text[inventoryLineSize];
};

// Of two lines, that of the earlier needle counts; of one needle's, the first.
static void offerPiece(const Component& component, const char* piece, SelectedLine* selected) {
    for (int i = 0; i < selected->needle; i++) {
        const char* needle = component.needles[i];
        if (needle != nullptr && strstr(piece, needle) != nullptr) {
            selected->needle = i;
            memcpy(selected->text, piece, strlen(piece) + 1);
        }
    }
}

// Selects the lines of all components in one reading: hundreds of ports with a
// dozen components each would open their files ten thousand times.
static void selectLines(const Device* device, SelectedLine (&selected)[componentCount]) {
    for (SelectedLine& line : selected) {
        line.needle = needlesPerComponent;
    }
    FILE* inventory = openInventory(device->mac);
    char piece[inventoryLineSize];
    while (inventory != nullptr && fgets(piece, sizeof piece, inventory) != nullptr) {
        for (size_t i = 0; i < componentCount; i++) {
            offerPiece(components[i], piece, &selected[i]);
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

static void readVersion(Device* device, const Component& component, char* line) {
    if (hasTrait(&component, hasMbaFlags)) {
        setMbaFlags(device, line);
    }
    size_t length = 0;
    if (findVersionWord(line, &length) != nullptr) {
        parseForVersion(line);
        setVersion(device->*component.version, line);
    }
}

void readInventory(Device* device) {
    for (const Component& component : components) {
        setVersion(device->*component.version, "NA");
    }
    convertDIDtoName(device->didStr, device->chipName);
    device->hasMgmtFw = hasManagementFirmware(device) ? 1 : 0;
    if (device->hasMgmtFw == 0) {
        return;
    }
    SelectedLine selected[componentCount];
    selectLines(device, selected);
    for (size_t i = 0; i < componentCount; i++) {
        if (selected[i].needle < needlesPerComponent) {
            readVersion(device, components[i], selected[i].text);
        }
    }
}

void getFwVersions(DeviceHeadTail* list, const char* flashTool) {
    for (Device* device = firstDevice(list); device != nullptr; device = device->next) {
        runCommand("%s %s dir >%s", flashTool, device->mac, device->mac);
        readInventory(device);
    }
}

void write_device_info_file_to_log(const char* fileName, bool echo) {
    FILE* inventory = openInventory(fileName);
    if (inventory == nullptr) {
        return;
    }
    writeMessage(echo, "\n\nDirectory information for %s\n", fileName);
    copyFileToLog(inventory, echo);
    fclose(inventory);
}

}  // namespace fwup
