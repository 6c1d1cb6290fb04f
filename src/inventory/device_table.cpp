#include "inventory/device_table.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "inventory/supported_device.h"

namespace fwup {

bool is_valid_mac_address(const char* mac) {
    // strtoul alone would also take a sign.
    return isxdigit(static_cast<unsigned char>(mac[0])) != 0 && strtoul(mac, nullptr, 16) != 0;
}

static bool parseRow(const char* line, DeviceRow* row) {
    // One character more than fits, so that a token too long shows.
    char did[sizeof row->didStr + 1];
    char mac[sizeof row->mac + 1];
    if (sscanf(line, "%*s %10s %15s", did, mac) != 2) {
        return false;
    }
    if (strlen(did) >= sizeof row->didStr || strlen(mac) >= sizeof row->mac) {
        return false;
    }
    memcpy(row->didStr, did, sizeof row->didStr);
    memcpy(row->mac, mac, sizeof row->mac);
    return is_did_supported(row->didStr) && is_valid_mac_address(row->mac);
}

bool readTableLine(TableState* state, const char* line, DeviceRow* row) {
    switch (*state) {
        case TableState::beforeHeader:
            if (strstr(line, " MAC ") != nullptr) {
                *state = TableState::afterHeader;
            }
            return false;
        case TableState::afterHeader: *state = TableState::rows; return false;
        case TableState::rows:
            if (strstr(line, "Quit") != nullptr) {
                *state = TableState::ended;
                return false;
            }
            return parseRow(line, row);
        case TableState::ended: break;
    }
    return false;
}

}  // namespace fwup
