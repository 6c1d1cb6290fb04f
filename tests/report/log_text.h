// Logs put together from the pieces that the tool writes, for what no run
// brings about.
#pragma once

#include <string>

#include "line_cutter.h"
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

inline std::string table(const std::string& boot, const std::string& mac = "020000000001",
                         bool withHead = true) {
    const std::string head =
        "\n    ADAPTER MAC    \tBOOT\tMFW\tIPMI\tASF\tPXE\tUMP\tNCSI\tiSCSI\tEFI\tIMFW\tL2\t\tBUS:DEVICE:FUNC\n"
        "-------------------\t----\t----\t----\t---\t---\t---\t---\t---\t---\t---\t---\t\t---\n";
    return (withHead ? head : "") + mac + " (3C01)\t" + boot +
           "\tNA\tNA\tNA\tNA\tNA\tNA\tNA\tNA\tNA\tNA\t\t3:0:0\n";
}

inline std::string directory(const std::string& content = "bc1\n") {
    return "\n\nDirectory information for 020000000001\n" + content;
}

inline const std::string stampCommand =
    "./lnxfwvt2 020000000001 cfg -noreset -vpdv0 7.12b.4.3a >>" + logName;

// The turn of port 020000000001 up to the outcome of its stamp.
inline std::string visit(const std::string& outcome, const std::string& content = "bc1\n") {
    const std::string show =
        "./lnxfwvt2 020000000001 cfg -show vpdv0 >020000000001_VPD_V0_Data1.log \n";
    return "\nUpdating Kelvane Veltrasia II adapters.\n"
           "\nThe device driver version for 020000000001 is 2.1.6.\n"
           "\nChecking VPD-V0 data for device 020000000001 did: 1 ssid: 2 \n " +
           show + execute(show) +
           "*** Successfully completed performing V0 check on device 020000000001 ***\n\n"
           "\nWriting Build Version 7.12b.4.3a to vpd-v0 for device 020000000001\n" +
           stampCommand + execute(stampCommand) + directory(content) + outcome;
}

inline std::string stamped() {
    return visit("*** Successfully completed vpd-v0 update on device 020000000001 ***\n\n");
}

inline std::string comparing(int force) {
    return "Comparing \"7.10a.2.1b\" (on card) with \"7.12b.4.3a\" (current build) "
           "need_to_force_update=" +
           std::to_string(force) + "\nUpdating 020000000001 using file 3C01bc.bin\n";
}

inline std::string flashCommand(bool forced) {
    return std::string("./lnxfwvt2 020000000001 upgrade -noreset ") + (forced ? "-F " : "") +
           "-bc 3C01bc.bin nv.bak >>" + logName;
}

inline const std::string flashFailure =
    " !!! Error updating bc firmware on device 020000000001 using file 3C01bc.bin !!!\n\n";

inline std::string summaryLine(bool clean) {
    return clean
               ? "\n\nUpdate complete. The firmware update log has been saved in " + logName + ".\n"
               : "\n\nOne or more errors occurred during the firmware update process. See " +
                     logName + " for more information.\n";
}

inline std::string secondTable(const std::string& boot) {
    return execute("rm 020000000001") + listing() + table(boot) + execute("rm 020000000001");
}

inline std::string finish(bool clean, const std::string& boot = "7.12.5") {
    return execute("rm 020000000001_VPD_V0_Data1.log") + secondTable(boot) + summaryLine(clean) +
           execute("rm q");
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
