#include "tool_line.h"

#include <charconv>
#include <cstring>
#include <vector>

namespace report {

// More special texts stand before those that would take them for their own.
const LinePattern linePatterns[] = {
    {LineKind::header, "Kelvane Firmware Update Log."},
    {LineKind::title, "Marvek Ethernet Firmware Update Tool, Version <version>"},
    {LineKind::usageError, "Error! Incorrect usage of command line parameters."},
    {LineKind::noDuplicates, "No duplicate MACs found. Okay"},
    {LineKind::rebootBanner, "***** REBOOT REQUIRED *****"},
    {LineKind::macsCorrected,
     "Duplicated MAC Addresses have been detected and corrected. Please reboot and run the update package again to continue with the flash update."},
    {LineKind::noTemporaryFile, "Error! Cannot create temporary file \"<q or y>\"."},
    {LineKind::noTool, "Error! Unable to locate Kelvane <family> tool (<path>)."},
    {LineKind::noDeviceList, "Error! Unable to build <family> device list."},
    {LineKind::noDeviceResources, "Error! Unable to create resources for device <MAC>."},
    {LineKind::noListingFile, "Error! Cannot create temporary file for <family> devices."},
    {LineKind::noAdapters, "Warning. No Kelvane <family> adapters found."},
    {LineKind::noInventory, "Error 9: Cannot access <MAC> information file."},
    {LineKind::noNicResources, "Error! Unable to create resources for ptr_phy_list."},
    {LineKind::noDriverInformation,
     "Error! Failed to retrieve device driver information. Update cannot continue. See <log> for more information."},
    {LineKind::tableHead,
     "ADAPTER MAC    \tBOOT\tMFW\tIPMI\tASF\tPXE\tUMP\tNCSI\tiSCSI\tEFI\tIMFW\tL2\t\tBUS:DEVICE:FUNC"},
    {LineKind::tableRule,
     "-------------------\t----\t----\t----\t---\t---\t---\t---\t---\t---\t---\t---\t\t---"},
    {LineKind::passBegins, "Updating Kelvane <family> adapters."},
    {LineKind::driverVersion, "The device driver version for <MAC> is <version>."},
    {LineKind::stampCheck, "Checking VPD-V0 data for device <MAC> did: <number> ssid: <number>"},
    {LineKind::stampCheckFailed, "!!! Error performing VPDV0 check on device <MAC> !!!"},
    {LineKind::stampCheckDone,
     "*** Successfully completed performing V0 check on device <MAC> ***"},
    {LineKind::stampWriting, "Writing Build Version <version> to vpd-v0 for device <MAC>"},
    {LineKind::stampFailed, "!!! Error performing vpd-v0 update on device <MAC> !!!"},
    {LineKind::stampDone, "*** Successfully completed vpd-v0 update on device <MAC> ***"},
    {LineKind::directory, "Directory information for <MAC>"},
    {LineKind::adapterDown, "!!! Error updating firmware on <MAC>, adapter is down !!!"},
    {LineKind::corrupted,
     "!!! Error updating firmware on <MAC> because the installed firmware is corrupted. Contact Marvek support. !!!"},
    {LineKind::comparing,
     "Comparing \"<stamp>\" (on card) with \"<version>\" (current build) need_to_force_update=<number>"},
    {LineKind::flashBegins, "Updating <MAC> using file <image>"},
    {LineKind::imageMissing,
     "!!! Error updating <component> firmware on device <MAC> using file <image>. File not found !!!"},
    {LineKind::flashFailed,
     "!!! Error updating <component> firmware on device <MAC> using file <image> !!!"},
    {LineKind::flashDone, "*** Update successful ***"},
    {LineKind::flashNotNeeded, "*** No update needed ***"},
    {LineKind::flashNotAccepted, "*** No update needed because need_to_force_update=0 ***"},
    {LineKind::flashReboot, "*** Update successful, reboot needed ***"},
    {LineKind::blockRemoved, "*** iscsi <cfg or cfg2> removed successfully ***"},
    {LineKind::blockNotRemoved, "*** iscsi <cfg or cfg2> removal failed ***"},
    {LineKind::ybRight, "*** YB data is correct on <MAC> ***"},
    {LineKind::ybRepaired, "*** Successfully completed performing YB fix on device <MAC> ***"},
    {LineKind::ybFailed, "!!! Error performing YB fix on device <MAC> !!!"},
    {LineKind::crcBegins, "Now starting a CRC check for each Kelvane Ethernet adapter."},
    {LineKind::crcOfPort, "Performing CRC check for device <MAC>"},
    {LineKind::crcDown, "!!! Error performing CRC check on device <MAC>, adapter is down !!!"},
    {LineKind::crcFailed, "!!! Error performing CRC check on device <MAC> !!!"},
    {LineKind::crcPassed, "*** Successfully completed CRC check on device <MAC> ***"},
    {LineKind::crcEnds, "CRC check complete."},
    {LineKind::iscsiVersion, "ISB_CFG<block> version for <MAC> is <version>"},
    {LineKind::switchBegins, "<Enabl or Disabl>ing management firmware (<component>) for <MAC>"},
    {LineKind::switchReboot,
     "*** Successfully <enabl or disabl>ed management firmware (<component>) on device <MAC> (reboot required) ***"},
    {LineKind::switchDone,
     "*** Successfully <enabl or disabl>ed management firmware (<component>) on device <MAC> ***"},
    {LineKind::switchFailed,
     "!!! Error disabling management firmware (<component>) on device <MAC> !!!"},
    {LineKind::switchFailedNcsi,
     "!!! Error <Enabl or Disabl>ing management firmware (NSCI) on device <MAC> !!!"},
    {LineKind::skipped, "Skipping command: \"<command>\""},
    {LineKind::errorsOccurred,
     "One or more errors occurred during the firmware update process. See <log> for more information."},
    {LineKind::updateComplete, "Update complete. The firmware update log has been saved in <log>."},
};
const size_t linePatternCount = sizeof linePatterns / sizeof linePatterns[0];

const char* const columnNames[versionColumns] = {"boot", "mfw",   "ipmi", "asf",  "pxe", "ump",
                                                 "ncsi", "iscsi", "efi",  "imfw", "l2"};

const char* textOf(LineKind kind) {
    for (const LinePattern& pattern : linePatterns) {
        if (pattern.kind == kind) {
            return pattern.text;
        }
    }
    return nullptr;
}

bool startsWith(std::string_view text, std::string_view start) {
    return text.size() >= start.size() && memcmp(text.data(), start.data(), start.size()) == 0;
}

bool endsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() &&
           memcmp(text.data() + text.size() - end.size(), end.data(), end.size()) == 0;
}

std::string_view trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

bool readNumber(std::string_view text, int& number) {
    if (text.empty() || text.size() > 10) {
        return false;
    }
    const char* end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

// The literal parts of a pattern, and how many fields lie between them.
struct Literals {
    std::string_view parts[maxFields + 1];
    size_t fields = 0;
};

static Literals takeApart(std::string_view pattern) {
    Literals literals;
    for (;;) {
        const size_t open = pattern.find('<');
        literals.parts[literals.fields] = pattern.substr(0, open);
        if (open == std::string_view::npos) {
            return literals;
        }
        literals.fields++;
        pattern.remove_prefix(pattern.find('>') + 1);
    }
}

// Fields are taken from the right: what an adapter holds stands to the left of
// what the tool adds, and can't be taken for it.
static bool match(const Literals& literals, std::string_view line, ToolLine& found) {
    if (literals.fields == 0) {
        return line == literals.parts[0];
    }
    const std::string_view last = literals.parts[literals.fields];
    const std::string_view first = literals.parts[0];
    if (line.size() < first.size() + last.size() || !startsWith(line, first) ||
        !endsWith(line, last)) {
        return false;
    }
    std::string_view rest = line.substr(0, line.size() - last.size());
    for (size_t i = literals.fields - 1; i > 0; i--) {
        const size_t at = rest.rfind(literals.parts[i]);
        if (at == std::string_view::npos || at < first.size()) {
            return false;
        }
        found.fields[i] = rest.substr(at + literals.parts[i].size());
        rest = rest.substr(0, at);
    }
    found.fields[0] = rest.substr(first.size());
    return true;
}

struct Row {
    LineKind kind;
    Literals literals;
};

// The rows of the table that a line with this first byte may match, in order.
struct PatternTable {
    std::vector<Row> rows[256];
};

static PatternTable takeTableApart() {
    PatternTable table;
    for (size_t i = 0; i < linePatternCount; i++) {
        const Row row = {linePatterns[i].kind, takeApart(linePatterns[i].text)};
        const std::string_view first = row.literals.parts[0];
        for (size_t byte = 0; byte < 256; byte++) {
            if (first.empty() || static_cast<unsigned char>(first[0]) == byte) {
                table.rows[byte].push_back(row);
            }
        }
    }
    return table;
}

ToolLine readToolLine(std::string_view line) {
    static const PatternTable table = takeTableApart();
    const std::string_view text = trimmed(line);
    ToolLine found;
    found.text = text;
    if (text.empty()) {
        return found;
    }
    for (const Row& row : table.rows[static_cast<unsigned char>(text[0])]) {
        if (match(row.literals, text, found)) {
            found.kind = row.kind;
            return found;
        }
    }
    return {};
}

// The next column, cut off the front of `rest`.
static std::string_view nextColumn(std::string_view& rest) {
    const size_t end = rest.find('\t');
    const std::string_view column = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    return column;
}

static bool readAddress(std::string_view text, TableRow& row) {
    const size_t first = text.find(':');
    const size_t second = text.find(':', first == std::string_view::npos ? first : first + 1);
    return second != std::string_view::npos && readNumber(text.substr(0, first), row.bus) &&
           readNumber(text.substr(first + 1, second - first - 1), row.device) &&
           readNumber(text.substr(second + 1), row.function);
}

bool readTableRow(std::string_view line, TableRow& row) {
    const std::string_view name = nextColumn(line);
    const size_t open = name.find(" (");
    if (open == std::string_view::npos || open == 0 || !endsWith(name, ")")) {
        return false;
    }
    row.mac = name.substr(0, open);
    row.label = name.substr(open + 2, name.size() - open - 3);
    for (std::string_view& version : row.versions) {
        version = nextColumn(line);
    }
    return nextColumn(line).empty() && readAddress(line, row);
}

}  // namespace report
