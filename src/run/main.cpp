// The run: one flat sequence of steps, each of which belongs to a room of its
// own.
#include <sys/stat.h>

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
#include "run/run_turn.h"
#include "run/signal_guard.h"
#include "run/standard_streams.h"
#include "update/component_flash.h"
#include "update/exit_status.h"
#include "update/update_pass.h"

namespace fwup {

static const char* const pVer = ZENTRIX_VERSION;
static const char* const family = "Veltrasia II";

// The flags are clear at the start of the process. A mode without a branch does
// not compile: it would run with the flags of a plain update.
static void setFlags(RunMode mode) {
    switch (mode) {
        case silentUpdate: bSilent = 1; break;
        case forcedUpdate: bForce = 1; break;
        case silentForcedUpdate: bSilent = bForce = 1; break;
        case ncsiEnableMode:
        case ncsiDisableMode: bool_set_ncsi = 1; break;
        case iscsiConfigUpdate: bool_iscsi_fix = bForce = 1; break;
        case vtNcsiUpdate: bool_vt_ncsi = bForce = 1; break;
        case defaultUpdate:
        case versionsMode:
        case usageMode:
        case usageErrorMode:
        case disableMfwMode:
        case crcCheckMode:
        case directoryMode:
        case iscsiVersionsMode: break;
    }
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

// A pass without build version has failed at nothing and counts as clean.
static ExitStatus exitStatusOfPass(int status) {
    return status == passNoBuildVersion ? exitClean : static_cast<ExitStatus>(status);
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
// operation do not change the exit status. A mode without a branch does not
// compile: falling through to the update would flash every adapter.
static ExitStatus runOperation(RunMode mode, DeviceHeadTail** list, char* flashTool) {
    switch (mode) {
        case defaultUpdate:
        case silentUpdate:
        case forcedUpdate:
        case silentForcedUpdate:
        case iscsiConfigUpdate:
        case vtNcsiUpdate: return runUpdate(list, flashTool);
        case versionsMode: displayFwVersions(*list); break;
        case disableMfwMode: disableManagementFirmware(*list, flashTool); break;
        case ncsiEnableMode:
        case ncsiDisableMode: set_ncsi_firmware(*list, flashTool, mode == ncsiEnableMode); break;
        case directoryMode: perform_dir_command(*list); break;
        case iscsiVersionsMode: display_iscsicfg_versions(*list); break;
        case crcCheckMode:  // discovery and inventory are all that it does
        case usageMode:     // has ended before discovery
        case usageErrorMode: break;
    }
    releaseList(list);
    return exitClean;
}

static ExitStatus runOnDevices(RunMode mode, DeviceHeadTail** list) {
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
    return runOperation(mode, list, flashTool);
}

static ExitStatus run(int argc, char** argv) {
    openStandardStreams();
    // Root runs it: what it and its commands write is nobody else's to change.
    umask(umask(0) | S_IWGRP | S_IWOTH);
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
    setFlags(mode);
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
    const ExitStatus result = runOnDevices(mode, &list);
    deleteFile("q");
    releaseList(&list);
    return result;
}

}  // namespace fwup

int main(int argc, char** argv) {
    return fwup::run(argc, argv);
}
