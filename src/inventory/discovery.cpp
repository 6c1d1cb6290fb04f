#include "inventory/discovery.h"

#include <cstdio>
#include <cstdlib>

#include "inventory/device_table.h"
#include "inventory/firmware_inventory.h"
#include "log/command_runner.h"
#include "log/file_util.h"
#include "log/update_log.h"

namespace fwup {

bool setKORBtool(const char* family, char* flashTool) {
    snprintf(flashTool, flashToolSize, "./%s", "lnxfwvt2");
    if (fileExist(flashTool)) {
        return true;
    }
    writeMessage(true, "\nError! Unable to locate Kelvane %s tool (%s).\n", family, flashTool);
    return false;
}

// The listing's exit code is not looked at: a listing that failed shows as a
// table without rows.
static FILE* openListing(const char* family, const char* flashTool) {
    runCommand("%s <q >devices", flashTool);
    FILE* listing = fopen("devices", "r");
    if (listing == nullptr) {
        runCommand("%s <q >>%s", flashTool, szFwuplog);
        writeMessage(true, "Error! Cannot create temporary file for %s devices.\n", family);
    }
    return listing;
}

static void readTable(FILE* listing, DeviceHeadTail* list) {
    char line[tableLineSize];
    TableState state = TableState::beforeHeader;
    DeviceRow row;
    while (state != TableState::ended && fgets(line, sizeof line, listing) != nullptr) {
        if (readTableLine(&state, line, &row)) {
            addDevicetoList(list, row.didStr, row.mac, static_cast<unsigned int>(-1));
        }
    }
}

static bool listDevices(const char* family, const char* flashTool, DeviceHeadTail* list) {
    FILE* listing = openListing(family, flashTool);
    if (listing == nullptr) {
        return false;
    }
    writetoLog("\n", false);
    copyFileToLog(listing, false);
    writetoLog("\n", false);
    rewind(listing);
    readTable(listing, list);
    fclose(listing);
    deleteFile("devices");
    if (getDeviceCount(list) == 0) {
        writeMessage(true, "\nWarning. No Kelvane %s adapters found.\n", family);
        return false;
    }
    return true;
}

DeviceHeadTail* getDevices(const char* family, char* flashTool) {
    if (!setKORBtool(family, flashTool)) {
        return nullptr;
    }
    DeviceHeadTail* list = createList();
    if (list == nullptr) {
        writeMessage(true, "Error! Unable to build %s device list.\n", family);
        return nullptr;
    }
    if (!listDevices(family, flashTool, list)) {
        free(list);
        return nullptr;
    }
    getFwVersions(list, flashTool);
    return list;
}

}  // namespace fwup
