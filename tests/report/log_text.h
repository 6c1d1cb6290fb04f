// Logs put together from the pieces that the tool writes, for what no run
// brings about.
#pragma once

#include <string>

#include "log_reader.h"
#include "summary.h"

namespace report {

inline const std::string logName = "/var/log/Marvek_Support/kvlnfwup.log";

inline std::string about(const std::string& command) {
    return "\nAbout to execute: \"" + command + "\"\n";
}

inline std::string returned(const std::string& command, int code) {
    return "Command \"" + command + "\" returned code: " + std::to_string(code) + "\n ";
}

inline std::string execute(const std::string& command, int code = 0,
                           const std::string& output = "") {
    return about(command) + output + returned(command, code);
}

inline std::string title() {
    return "Kelvane Firmware Update Log.\n\nMarvek Ethernet Firmware Update Tool, Version 1.0.64\n\n";
}

inline std::string listing(const std::string& listed = "1 3C01 020000000001\nQuit\n") {
    return execute("./lnxfwvt2 <q >devices") + "\n" + listed + "\n" + execute("rm devices") +
           execute("./lnxfwvt2 020000000001 dir >020000000001");
}

inline std::string start() {
    return title() + "No duplicate MACs found. Okay\n" + listing();
}

inline const std::string tableHead =
    "\n    ADAPTER MAC    \tBOOT\tMFW\tIPMI\tASF\tPXE\tUMP\tNCSI\tiSCSI\tEFI\tIMFW\tL2\t\tBUS:DEVICE:FUNC\n"
    "-------------------\t----\t----\t----\t---\t---\t---\t---\t---\t---\t---\t---\t\t---\n";

inline std::string row(const std::string& boot, const std::string& mac = "020000000001",
                       const std::string& iscsi = "NA", const std::string& bus = "3") {
    return mac + " (3C01)\t" + boot + "\tNA\tNA\tNA\tNA\tNA\tNA\t" + iscsi + "\tNA\tNA\tNA\t\t" +
           bus + ":0:0\n";
}

inline std::string table(const std::string& boot) {
    return tableHead + row(boot);
}

inline std::string directory(const std::string& content = "bc1\n",
                             const std::string& mac = "020000000001") {
    return "\n\nDirectory information for " + mac + "\n" + content;
}

inline const std::string pass = "\nUpdating Kelvane Veltrasia II adapters.\n";

// The turn of a port up to the outcome of its stamp.
inline std::string visit(const std::string& outcome, const std::string& content = "bc1\n",
                         const std::string& mac = "020000000001") {
    const std::string show =
        "./lnxfwvt2 " + mac + " cfg -show vpdv0 >" + mac + "_VPD_V0_Data1.log \n";
    const std::string stamp = "./lnxfwvt2 " + mac + " cfg -noreset -vpdv0 7.12b.4.3a >>" + logName;
    return "\nThe device driver version for " + mac +
           " is 2.1.6.\n\nChecking VPD-V0 data for device " + mac + " did: 1 ssid: 2 \n " + show +
           execute(show) + "*** Successfully completed performing V0 check on device " + mac +
           " ***\n\n\nWriting Build Version 7.12b.4.3a to vpd-v0 for device " + mac + "\n" + stamp +
           execute(stamp) + directory(content, mac) + outcome;
}

inline std::string stamped(const std::string& mac = "020000000001") {
    return visit("*** Successfully completed vpd-v0 update on device " + mac + " ***\n\n", "bc1\n",
                 mac);
}

inline std::string comparing(int force, const std::string& mac = "020000000001",
                             const std::string& component = "bc") {
    return "Comparing \"7.10a.2.1b\" (on card) with \"7.12b.4.3a\" (current build) "
           "need_to_force_update=" +
           std::to_string(force) + "\nUpdating " + mac + " using file 3C01" + component + ".bin\n";
}

inline std::string flashCommand(bool forced, const std::string& mac = "020000000001",
                                const std::string& component = "bc") {
    return "./lnxfwvt2 " + mac + " upgrade -noreset " + (forced ? "-F " : "") + "-" + component +
           " 3C01" + component + ".bin nv.bak >>" + logName;
}

inline std::string flashFailure(const std::string& mac = "020000000001",
                                const std::string& component = "bc") {
    return " !!! Error updating " + component + " firmware on device " + mac + " using file 3C01" +
           component + ".bin !!!\n\n";
}

inline const std::string success = "*** Update successful ***\n\n";
inline const std::string refused = "*** No update needed because need_to_force_update=0 ***\n\n";

inline std::string crc(bool passed, const std::string& mac = "020000000001") {
    return execute("./lnxfwvt2 " + mac + " crc <y >>" + logName, passed ? 0 : 8) +
           directory("bc1\n", mac) +
           (passed ? "*** Successfully completed" : " !!! Error performing") +
           " CRC check on device " + mac + (passed ? " ***\n\n" : " !!!\n\n");
}

inline std::string summaryLine(bool clean) {
    return clean
               ? "\n\nUpdate complete. The firmware update log has been saved in " + logName + ".\n"
               : "\n\nOne or more errors occurred during the firmware update process. See " +
                     logName + " for more information.\n";
}

// From the end of the pass on, with these rows in the second table.
inline std::string finish(bool clean, const std::string& rows = row("7.12.5")) {
    return execute("rm 020000000001") + listing() + tableHead + rows + execute("rm 020000000001") +
           summaryLine(clean) + execute("rm q");
}

inline Run readText(const std::string& text, size_t pieceSize = 1 << 16) {
    LineCutter cutter;
    LogReader reader;
    for (size_t at = 0; at < text.size(); at += pieceSize) {
        readBytes(reader, cutter, std::string_view(text).substr(at, pieceSize));
    }
    readRest(reader, cutter);
    return finishLog(reader);
}

}  // namespace report
