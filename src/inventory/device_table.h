// The device table that the flash utility lists, read line by line:
//
//   any lines, ignored
//   header: the first line with " MAC "
//   one line, skipped unread
//   rows: index, device ID and MAC, separated by blanks; more may follow
//   the first line with "Quit" ends the table
//
// Text only: nothing here opens a file or runs a command.
#pragma once

namespace fwup {

// Room for one line of the table; a longer one is read as several.
constexpr int tableLineSize = 255;

struct DeviceRow {
    char didStr[10];
    char mac[15];
};

enum class TableState { beforeHeader, afterHeader, rows, ended };

// True when the token begins with a hexadecimal digit and is not zero, as
// strtoul reads it with base 16.
bool is_valid_mac_address(const char* mac);

// Takes the next line. True when it is the row of a supported port, which is
// then in `row`. A row whose device ID or MAC is too long is skipped, since a
// cut MAC would name another port.
bool readTableLine(TableState* state, const char* line, DeviceRow* row);

}  // namespace fwup
