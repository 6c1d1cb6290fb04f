#include "inventory/version_report.h"

#include <cstdio>
#include <cstring>

#include "inventory/component_table.h"
#include "log/update_log.h"

namespace fwup {

// One line of the table, which reaches the log in one piece.
using Line = char[messageSize];

static void append(Line& line, const char* text) {
    const size_t length = strlen(line);
    snprintf(line + length, sizeof line - length, "%s", text);
}

static void appendColumn(Line& line, const char* text) {
    append(line, text);
    append(line, "\t");
}

static void writeHeading() {
    Line headings = "\n    ADAPTER MAC    \t";
    Line rules = "-------------------\t";
    for (const VersionColumn& column : versionColumns) {
        appendColumn(headings, column.heading);
        appendColumn(rules, column.rule);
    }
    append(headings, "\tBUS:DEVICE:FUNC\n");
    append(rules, "\t---\n");
    writetoLog(headings, true);
    writetoLog(rules, true);
}

// A longer row would be cut, and its line feed with it.
static_assert(sizeof(Device::mac) - 1 + sizeof(Device::chipName) - 1 + sizeof " ()\t" - 1 +
                      versionColumnCount * sizeof(VersionField) +
                      sizeof "\t-2147483648:-2147483648:-2147483648\n" <=
                  messageSize,
              "the version table has too many columns");

static void writeRow(const Device* device) {
    Line row;
    snprintf(row, sizeof row, "%s (%s)\t", device->mac, device->chipName);
    for (const VersionColumn& column : versionColumns) {
        appendColumn(row, device->*column.version);
    }
    char address[sizeof "\t-2147483648:-2147483648:-2147483648\n"];
    snprintf(address, sizeof address, "\t%d:%d:%d\n", device->pciBus,
             static_cast<int32_t>(device->pciDevice), static_cast<int32_t>(device->pciFunction));
    append(row, address);
    writetoLog(row, true);
}

void displayFwVersions(const DeviceHeadTail* list) {
    writeHeading();
    for (const Device* device = firstDevice(list); device != nullptr; device = device->next) {
        writeRow(device);
    }
}

}  // namespace fwup
