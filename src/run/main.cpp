// The run: one flat sequence of steps, each of which belongs to a room of its
// own.
#include <cstdint>
#include <cstdio>

#include "inventory/check_list.h"
#include "inventory/discovery.h"
#include "inventory/nic_info.h"
#include "inventory/version_report.h"
#include "log/command_runner.h"
#include "log/response_file.h"
#include "log/update_log.h"
#include "maintenance/diagnostics.h"
#include "maintenance/management_firmware.h"
#include "partmac/partition_mac.h"
#include "run/command_line.h"
#include "run/exit_status.h"
#include "run/run_turn.h"
#include "run/signal_guard.h"
#include "run/standard_streams.h"
#include "update/component_flash.h"
#include "update/update_pass.h"

namespace fwup {

static const char* const pVer = "1.0.64";
static const char* const family = "Veltrasia II";

// 1 when the mode switches NCSI, on or off.
static uint8_t bool_set_ncsi = 0;

// The operation of the report and maintenance modes; none of them set means an
// update.
struct RunFlags {
    uint8_t showVersions;
    uint8_t disableMfw;
    uint8_t crcMode;
    uint8_t ncsiEnable;
    uint8_t dirMode;
    uint8_t iscsiVersions;
};

static RunFlags setFlags(RunMode mode) {
    RunFlags flags = {};
    bSilent = mode == silentUpdate || mode == silentForcedUpdate;
    bForce = mode == forcedUpdate || mode == silentForcedUpdate || mode == iscsiConfigUpdate ||
             mode == vtNcsiUpdate;
    bool_set_ncsi = mode == ncsiEnableMode || mode == ncsiDisableMode;
    bool_iscsi_fix = mode == iscsiConfigUpdate;
    bool_vt_ncsi = mode == vtNcsiUpdate;
    flags.showVersions = mode == versionsMode;
    flags.disableMfw = mode == disableMfwMode;
    flags.crcMode = mode == crcCheckMode;
    flags.ncsiEnable = mode == ncsiEnableMode;
    flags.dirMode = mode == directoryMode;
    flags.iscsiVersions = mode == iscsiVersionsMode;
    return flags;
}

static void logTitle() {
    writeMessage(true, "Marvek Ethernet Firmware Update Tool, Version %s\n\n", pVer);
}

static void logErrorsOccurred() {
    writeMessage(
        true,
        "\n\nOne or more errors occurred during the firmware update process. See %s for more information.\n",
        szFwuplog);
}

// True when partition MACs were changed, so that nothing else may run before a
// reboot.
static bool needsReboot() {
    if (!fix_max_if_duplicate()) {
        writetoLog("No duplicate MACs found. Okay\n", true);
        return false;
    }
    writetoLog("\n\n  ***** REBOOT REQUIRED ***** \n\n", true);
    writetoLog(
        "Duplicated MAC Addresses have been detected and corrected. Please reboot and run the update package again to continue with the flash update.\n",
        true);
    writetoLog("\n\n  ***** REBOOT REQUIRED ***** \n\n", true);
    return true;
}

// Lists what the ports carry after the pass; a rediscovery that fails still
// shows the table's heading.
static void showUpdatedVersions(char* flashTool) {
    DeviceHeadTail* list = getDevices(family, flashTool);
    get_nic_info(list);
    displayFwVersions(list);
    releaseList(&list);
}

// A pass without build version (-1) has failed at nothing and counts as clean.
static ExitStatus exitStatusOfPass(int status) {
    switch (status) {
        case passFailed:
            return exitErrors;
        case passAdapterDown:
            return exitAdapterDown;
        default:
            return exitClean;
    }
}

static ExitStatus runUpdate(DeviceHeadTail** list, char* flashTool) {
    displayFwVersions(*list);
    const int status = updateDevices(*list, flashTool, family);
    releaseList(list);
    showUpdatedVersions(flashTool);
    const ExitStatus result = exitStatusOfPass(status);
    if (result != exitClean) {
        logErrorsOccurred();
    } else {
        writeMessage(true, "\n\nUpdate complete. The firmware update log has been saved in %s.\n",
                     szFwuplog);
    }
    return result;
}

// One operation, as the mode asks; failures of a report or a maintenance
// operation do not change the exit status.
static ExitStatus runOperation(const RunFlags& flags, DeviceHeadTail** list, char* flashTool) {
    if (flags.iscsiVersions != 0) {
        display_iscsicfg_versions(*list);
    } else if (flags.dirMode != 0) {
        perform_dir_command(*list);
    } else if (flags.showVersions != 0) {
        displayFwVersions(*list);
    } else if (flags.disableMfw != 0) {
        disableManagementFirmware(*list, flashTool);
    } else if (bool_set_ncsi != 0) {
        set_ncsi_firmware(*list, flashTool, flags.ncsiEnable != 0);
    } else if (flags.crcMode == 0) {
        return runUpdate(list, flashTool);
    }
    releaseList(list);
    return exitClean;
}

static ExitStatus runOnDevices(const RunFlags& flags, DeviceHeadTail** list) {
    char flashTool[flashToolSize] = "";
    *list = getDevices(family, flashTool);
    if (*list == nullptr) {
        logErrorsOccurred();
        return exitNoDevices;
    }
    if (!get_nic_info(*list)) {
        writeMessage(
            true,
            "\n\nError! Failed to retrieve device driver information. Update cannot continue. See %s for more information.\n",
            szFwuplog);
        return exitErrors;
    }
    resetCheckList();
    RefineTheList(*list);
    return runOperation(flags, list, flashTool);
}

static ExitStatus run(int argc, char** argv) {
    openStandardStreams();
    const RunMode mode = processCmdLine(argc, argv);
    if (mode != usageMode && mode != usageErrorMode) {
        waitForTurn();
    }
    guardSignals();
    initLogFile();
    if (mode == usageMode) {
        displayUsage();
        return exitClean;
    }
    const RunFlags flags = setFlags(mode);
    logTitle();
    if (mode == usageErrorMode) {
        writetoLog("Error! Incorrect usage of command line parameters.\n", true);
        return exitErrors;
    }
    if (needsReboot()) {
        return exitErrors;
    }
    if (!createQuitFile()) {
        return exitErrors;
    }
    DeviceHeadTail* list = nullptr;
    const ExitStatus result = runOnDevices(flags, &list);
    deleteFile("q");
    releaseList(&list);
    return result;
}

}  // namespace fwup

int main(int argc, char** argv) {
    return fwup::run(argc, argv);
}
