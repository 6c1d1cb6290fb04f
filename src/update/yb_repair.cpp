#include "update/yb_repair.h"

#include <cstdio>
#include <cstring>

#include "log/command_runner.h"
#include "log/file_util.h"
#include "log/flash_tool_code.h"
#include "log/update_log.h"
#include "update/yb_text.h"

namespace fwup {

struct YbVariant {
    uint32_t subsysId;
    const char* dataFile;
    bool readMustSucceed;
    int digits;  // of each byte in the fix command
};

static const YbVariant ybVariants[] = {
    {0x0B24, "YB_Data3.log", true, 2},
    {0x0B21, "YB_Data4.log", false, 1},
};

static const char* const ybDataFiles[] = {"YB_Data1.log", "YB_Data2.log", "YB_Data3.log",
                                          "YB_Data4.log"};

constexpr int ybLineSize = 1000;
// Besides the path of the utility, the MAC and the log's.
constexpr size_t ybCommandSize = ybTextSize + messageSize;

static const YbVariant* findVariant(uint32_t subsysId) {
    for (const YbVariant& variant : ybVariants) {
        if (variant.subsysId == subsysId) {
            return &variant;
        }
    }
    return nullptr;
}

static int runLogged(const char* command) {
    writetoLog(command, false);
    return SYSTEM(command);
}

// Shown even in silent mode.
static void printAndLog(const char* text) {
    printf("%s", text);
    writetoLog(text, false);
}

static bool readYbField(const Device* device, const YbVariant& variant, const char* flashTool) {
    printf("\nChecking YB data for device %s did: %u ssid: %u \n ", device->mac, device->deviceId,
           device->subsysId);
    char command[messageSize];
    snprintf(command, sizeof command, "%s %s cfg -show vpdyb >>%s \n", flashTool, device->mac,
             variant.dataFile);
    const int status = runLogged(command);
    return status == 0 || !variant.readMustSucceed;
}

static void fixYbField(const Device* device, const YbVariant& variant, const char* flashTool) {
    printf("YB fix is being applied Fix for %s \n", device->mac);
    char value[ybTextSize];
    formatYbValue(value, variant.digits);
    char command[ybCommandSize];
    snprintf(command, sizeof command, "%s %s cfg -vpdyb \"%s\" >>%s", flashTool, device->mac, value,
             szFwuplog);
    const int status = runLogged(command);
    char text[messageSize];
    // The raw status is judged: the exit code's number counts in either form.
    if (status == 0 || status == codeRebootRequired || status == codeRebootRequired * 256) {
        snprintf(text, sizeof text,
                 "*** Successfully completed performing YB fix on device %s ***\n\n", device->mac);
    } else {
        snprintf(text, sizeof text, " !!! Error performing YB fix on device %s !!!\n\n",
                 device->mac);
    }
    printAndLog(text);
}

static void checkYbField(const Device* device, const YbVariant& variant, const char* flashTool) {
    char line[ybLineSize];
    if (!readYbField(device, variant, flashTool) ||
        !findLineAndClose(fopen(variant.dataFile, "r"), "VPD", line, sizeof line)) {
        return;
    }
    writetoLog(line, false);
    char expected[ybTextSize];
    formatYbLine(expected);
    if (strstr(line, expected) == nullptr) {
        fixYbField(device, variant, flashTool);
        return;
    }
    char text[messageSize];
    snprintf(text, sizeof text, "*** YB data is correct on %s ***\n\n", device->mac);
    printAndLog(text);
}

void repairYb(const Device* device, const char* flashTool) {
    const YbVariant* variant = findVariant(device->subsysId);
    if (variant == nullptr) {
        return;
    }
    checkYbField(device, *variant, flashTool);
    for (const char* dataFile : ybDataFiles) {
        deleteFile(dataFile);
    }
}

}  // namespace fwup
