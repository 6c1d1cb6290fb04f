"""Small logs, and what zentrix-report tells of them."""

from log_text import *

BEFORE = START + TABLE + row("7.10.4")
BOTH = BEFORE + row("7.10.4", MAC2)
WITH_ISCSI = START + TABLE + row("7.10.4", iscsi="7.6.3")
PLAIN = finish(True, row("7.10.4"))
FAILED = finish(False, row("7.10.4"))
BOTH_NEW = row("7.12.5") + row("7.12.5", MAC2)
TURN = BEFORE + PASS + stamped()
YB_FIXED = TURN.replace("is 2.1.6.\n\n", "is 2.1.6.\n\n" + yb_fix(0)) + PLAIN
YB_FAILED = TURN.replace("is 2.1.6.\n\n", "is 2.1.6.\n\n" + yb_fix(9)) + PLAIN
CLEAN = TURN + flash(1, True, 0, SUCCESS) + finish(True)
SAME_AGAIN = TURN + flash(1, True, 0, SUCCESS) + PLAIN
NCSI_FAILED = ncsi_off(
    1, f" !!! Error disabling management firmware (NCSI) on device {MAC1} !!!\n\n") + END
CUT_FLASH = TURN + comparing(1) + about(flash_command(True))
FAILED_FLASH = TURN + flash(1, True, 9, flash_failure(), output="x\nbroken\n")
DOWN = f"!!! Error updating firmware on {MAC1}, adapter is down !!!\n"
ODD_LINES = f'rm "{MAC1}"\nAbout to execute: "rm\nAbout to execute: "rm x"\n'
STAMPED = f"*** Successfully completed vpd-v0 update on device {MAC1} ***\n"
NOT_STAMPED = f" !!! Error performing vpd-v0 update on device {MAC1} !!!\n"
NO_TOOL = (TITLE + NO_DUPLICATES + "\nError! Unable to locate Kelvane Veltrasia II tool (./x).\n"
           + summary(False) + END)
DRIVERLESS = "update-driverless"  # a transcript
REBOOT_FIRST = "\n\n  ***** REBOOT REQUIRED ***** \n\n"

# Name, log, and "outcome status operation: problems; remarks: ...; flashes: ...; next: codes, a
# run's command".
# Behind a problem stand the last digit of its port, its component and its line.
CASES = [
    # Runs that end early
    ("a heading", "Kelvane Firmware Update Log.\n\n",
     "heading-alone - none: heading-alone(2); next: check-nothing-runs run"),
    ("a title", TITLE, "cut-off - none: no-end(4); next: check-nothing-runs mend run"),
    ("wrong options", TITLE + "Error! Incorrect usage of command line parameters.\n",
     "usage-error 1 none: usage-error(5); next: mend run"),
    ("repaired MACs", TITLE + REBOOT_FIRST +
     "Duplicated MAC Addresses have been detected and corrected. Please reboot and run the update package again to continue with the flash update.\n"
     + REBOOT_FIRST, "reboot-first 1 none: macs-corrected(9); next: reboot run"),
    ("no answer file", TITLE + NO_DUPLICATES + 'Error! Cannot create temporary file "q".\n',
     "failed 1 none: no-temporary-file(6); next: mend run"),
    ("no tool", NO_TOOL, "no-adapters 171 none: no-utility(7); next: mend run"),
    ("no driver information", START +
     f"\n\nError! Failed to retrieve device driver information. Update cannot continue. See {LOG} for more information.\n"
     + END, "failed 1 none: no-driver-information(21); next: mend run"),
    ("a text that only the manual page has", BEFORE + "Error! Unable to write to log file.\n" + END,
     "failed 0 versions: other(23); next: run(./zentrix -v)"),
    # Other operations
    ("versions", BEFORE + execute(f"rm {MAC1}") + END, "clean 0 versions:"),
    ("nothing to see", START + execute(f"rm {MAC1}") + END, "clean 0 none:"),
    ("iSCSI versions", START + f"ISB_CFG  version for {MAC1} is 7.6.1\n" + END,
     "clean 0 iscsi-versions:"),
    ("ports that differ", BEFORE + row("NA", MAC2) + END,
     "failed 0 versions: answers-differ(2); next: run(./zentrix -v)"),
    ("a list that breaks off", TITLE + NO_DUPLICATES +
     listing(" No. Device MAC \n ---\n 1 3C01 020000000001\n 2 3C0") + TABLE + row("7.10.4") + END,
     "failed 0 versions: not-read(15); next: run(./zentrix -v)"),
    ("a list that holds its own end", TITLE + NO_DUPLICATES +
     listing(execute("rm devices") + TABLE + row("9.9.9")) + END,
     "failed 0 versions: doubtful(19); next: mend run(./zentrix -v)"),
    ("NCSI off, as all is", NCSI_FAILED,
     "failed 0 disable-management: switch-failed(1 NCSI 23); next: run(./zentrix -nomfw)"),
    ("NCSI off", ncsi_off(
        95, f"*** Successfully Disabled management firmware (NCSI) on device {MAC1} (reboot required) ***\n\n")
     + END, "clean 0 disable-ncsi:; next: reboot"),
    ("NCSI off, or all of it, cut off", ncsi_off(0, ""),
     "cut-off - disable-ncsi: no-end(23); next: check-nothing-runs mend run"),
    ("a bus that nobody knows, and one of ten digits",
     START + TABLE + row("7.10.4", bus=-1) + row("7.10.4", MAC2, bus=-2147483648) + END,
     "failed 0 versions: unknown-to-library(1); next: mend run(./zentrix -v)"),
    # Updates
    ("no build version", BEFORE + PASS + f"\nThe device driver version for {MAC1} is 2.1.6.\n" + PLAIN,
     "failed 0 update: no-build-version(1 26); next: mend run"),
    ("a clean update", CLEAN, "clean 0 update:; flashes: bc updated"),
    ("the same version again, forced by the stamp", SAME_AGAIN,
     "clean 0 update:; remarks: unchanged(1 bc 49); flashes: bc updated"),
    ("the same version again, not forced", TURN + flash(0, False, 0, SUCCESS) + PLAIN,
     "failed 0 update: not-written(1 bc 49); flashes: bc updated; next: run(./zentrix -f)"),
    ("an image that isn't accepted", TURN + flash(0, False, 70, REFUSED) + PLAIN,
     "failed 0 update: not-accepted(1 bc 53); flashes: bc not-accepted; next: mend run(./zentrix)"),
    ("an image that isn't accepted, forced by the stamp",
     TURN + flash(1, True, 70, flash_failure()) + crc(True) + FAILED,
     "failed 1 update: flash-failed(1 bc 53); flashes: bc failed; next: mend run(./zentrix -f)"),
    ("a failed flash", FAILED_FLASH + crc(True) + FAILED,
     "failed 1 update: flash-failed(1 bc 55); flashes: bc failed; next: run(./zentrix -f)"),
    ("a failed flash and a damaged adapter", FAILED_FLASH + crc(False) + FAILED,
     "failed 1 update: flash-failed(1 bc 55) crc-failed(1 64); flashes: bc failed;"
     " next: stay-up run(./zentrix -f)"),
    ("a failed flash that another port healed", BOTH + FAILED_FLASH[len(BEFORE):] + crc(False)
     + stamped(MAC2) + flash(0, False, 0, SUCCESS, MAC2) + crc(True, MAC2) + finish(False, BOTH_NEW),
     "failed 1 update: flash-failed(1 bc 56) crc-failed(1 65); flashes: bc failed, bc updated"),
    ("a port that is down", TURN + DOWN + crc(True) + FAILED,
     "adapter-down 172 update: adapter-down(1 48); next: load-driver run(./zentrix -f)"),
    ("a port that is down, and one that isn't", BOTH + PASS + stamped() + DOWN + crc(True)
     + stamped(MAC2) + flash(1, True, 0, SUCCESS, MAC2) + crc(True, MAC2) + finish(False, BOTH_NEW),
     "adapter-down 172 update: adapter-down(1 49); flashes: bc updated; next: load-driver"),
    ("a port that is down, and no list for the CRC check", TURN + DOWN +
     "\nError! Unable to build Veltrasia II device list.\n" + FAILED,
     "failed 1 update: adapter-down(1 48) no-device-list(50);"
     " next: mend load-driver run(./zentrix -f)"),
    ("reboot needed", TURN + flash(1, True, 95, "*** Update successful, reboot needed ***\n\n") + PLAIN,
     "clean 0 update:; flashes: bc updated-reboot-needed; next: reboot"),
    ("a code that nobody knows, and success", TURN + flash(1, True, 96, SUCCESS) + finish(True),
     "failed 0 update: doubtful(53); flashes: bc failed; next: mend run(./zentrix -f)"),
    ("two of them", TURN + flash(1, True, 96, SUCCESS)
     + flash(1, True, 96, SUCCESS, component="mfw1") + finish(True),
     "failed 0 update: doubtful(53); flashes: bc failed, mfw1 failed; next: mend run(./zentrix -f)"),
    ("a failure, and code 0", TURN + flash(1, True, 0, flash_failure()) + finish(True),
     "failed 0 update: doubtful(53) flash-failed(1 bc 53); flashes: bc failed;"
     " next: mend run(./zentrix -f)"),
    ("a flash without outcome", TURN + flash(1, True, 0, "") + finish(True),
     "failed 0 update: doubtful(54); flashes: bc updated; next: mend run(./zentrix -f)"),
    ("an update without summary", TURN + END,
     "cut-off - update: no-end(1 51); next: check-nothing-runs mend mend run(./zentrix -f)"),
    ("a component that the first table lacks",
     START + TABLE + row("NA") + PASS + stamped() + finish(True),
     "failed 0 update: answers-differ(1); next: run(./zentrix -f)"),
    ("a directory that could not be read, and firmware that seems to be corrupted",
     TITLE + NO_DUPLICATES + listing("", 1) + TABLE + row("NA") + PASS + stamped() +
     f"!!! Error updating firmware on {MAC1} because the installed firmware is corrupted. Contact Marvek support. !!!\n"
     + crc(True) + finish(False, row("NA")),
     "failed 1 update: not-read(1 16) firmware-corrupted(1 46); next: run"),
    ("a dry run", TURN + comparing(1) + about(flash_command(True)) +
     f'\nSkipping command: "{flash_command(True)}"\n' + SUCCESS + PLAIN,
     "clean 0 update: held-back(53); flashes: bc held-back; next: mend run(./zentrix -f)"),
    ("trouble after the pass", TURN + execute(f"rm {MAC1}") +
     "\nError! Unable to locate Kelvane Veltrasia II tool (./x).\n" + summary(True) + END,
     "failed 0 update: no-utility(52); next: mend run"),
    # The run to repeat
    ("a cut flash", CUT_FLASH + "10 %",
     "cut-off - update: no-end(1 bc 52); flashes: bc cut-off;"
     " next: check-nothing-runs stay-up mend mend run(./zentrix -f)"),
    ("a cut flash of a plain run", TURN + comparing(0) + about(flash_command(False)),
     "cut-off - update: no-end(1 bc 51); flashes: bc cut-off;"
     " next: check-nothing-runs stay-up mend mend run(./zentrix -f)"),
    ("a cut flash of what may have been to remove blocks",
     WITH_ISCSI + CUT_FLASH[len(BEFORE):],
     "cut-off - update: no-end(1 bc 51); flashes: bc cut-off;"
     " next: check-nothing-runs stay-up mend mend run"),
    ("blocks that were to be removed", WITH_ISCSI + PASS + stamped() + removal("cfg", 0) + about("x"),
     "cut-off - update: no-end(1 53);"
     " next: check-nothing-runs mend mend run(./zentrix -iscsicfgupdate)"),
    ("a block that isn't there", WITH_ISCSI + PASS + stamped() + removal("cfg2", 6)
     + finish(True, row("7.10.4", iscsi="7.6.3")), "clean 0 update:; remarks: no-block(1 isb_cfg2 51)"),
    ("a block that is left", WITH_ISCSI + PASS + stamped(content="isb_cfg2 1\n") + removal("cfg2", 6)
     + finish(True, row("7.10.4", iscsi="7.6.3")),
     "failed 0 update: block-not-removed(1 isb_cfg2 51); next: run(./zentrix -iscsicfgupdate)"),
    ("a summary whose removal is cut off",
     TURN + execute(f"rm {MAC1}") + summary(True) + about("rm q"),
     "cut-off - update: no-end(55); next: check-nothing-runs mend mend run"),
]

# Lines of trouble that an update goes on after, and what is told of them.
CASES += [(text, TURN + text + "\n" + PLAIN, "failed 0 update: " + told) for text, told in [
    (f"Error! Unable to create resources for device {MAC1}.",
     "no-device-resources(1 48); next: mend run"),
    ("Error! Cannot create temporary file for Veltrasia II devices.",
     "no-listing-file(48); next: mend run"),
    ("Warning. No Kelvane Veltrasia II adapters found.", "no-adapters(48); next: mend run"),
    (f"Error 9: Cannot access {MAC1} information file.", "no-directory(1 48); next: mend run"),
    ("Error! Unable to create resources for ptr_phy_list.", "no-nic-resources(48); next: mend"),
    (f"!!! Error performing CRC check on device {MAC1}, adapter is down !!!",
     "crc-down(1 48); next: load-driver"),
    ('Error! Cannot create temporary file "y".', "no-temporary-file(48); next: mend run"),
]]
CASES += [
    ("a failed stamp", BEFORE + PASS + visit(NOT_STAMPED) + PLAIN,
     "failed 0 update: stamp-failed(1 46); next: mend run"),
    ("a failed stamp behind another port's",
     BEFORE + PASS + visit(NOT_STAMPED, STAMPED.replace(MAC1, MAC2)) + PLAIN,
     "failed 0 update: stamp-failed(1 46); next: mend run"),
    ("a stamp that can't be read", BEFORE + PASS + unread_stamp() + FAILED,
     "failed 1 update: stamp-check-failed(1 36); next: mend run"),
    ("a field YB repaired", YB_FIXED, "clean 0 update:"),
    ("a field YB that could not be repaired", YB_FAILED, "failed 0 update: yb-failed(1 38); next: run"),
    ("no update needed", TURN + flash(0, False, 35, "*** No update needed ***\n\n") + PLAIN,
     "clean 0 update:; flashes: bc not-needed"),
    ("directories with odd lines", BEFORE.split(TABLE)[0] + directory(ODD_LINES)
     + directory(ODD_LINES, MAC2) + execute(f"rm {MAC1}") + END, "clean 0 directory:"),
    ("a list with odd lines", TITLE + NO_DUPLICATES +
     listing("1 3C01 020000000001\n" + ODD_LINES) + END, "clean 0 none:"),
    ("a transcript of many outcomes", "update-outcomes",
     "failed 1 update: image-missing(1 bc 66) flash-failed(1 mfw1 76) flash-failed(1 ncsi 98);"
     " flashes: bc image-missing, mfw1 failed, mba updated-reboot-needed, l2t not-needed,"
     " ncsi failed; next: mend mend run(./zentrix -f) reboot"),
    ("a transcript of a port that is down", DRIVERLESS,
     "adapter-down 172 update: adapter-down(1 66); flashes: bc updated, ncsi updated;"
     " next: load-driver"),
]

# Pairs of logs of one server, and what is told of the second.
CRC_FAILED = FAILED_FLASH + crc(False) + FAILED
CUT_AGAIN = CUT_FLASH.replace("kvlnfwup.log", "kvlnfwup001.log")
HISTORIES = [
    ("the same again", CRC_FAILED, CRC_FAILED,
     "failed 1 update: flash-failed(1 bc 55) crc-failed(1 64); flashes: bc failed;"
     " next: stay-up support"),
    ("an image that isn't accepted, then",
     CRC_FAILED, TURN + flash(0, True, 70, REFUSED) + PLAIN,
     "failed 0 update: not-accepted(1 bc 53); flashes: bc not-accepted; next: mend support"),
    ("healed", CRC_FAILED, CLEAN, "clean 0 update:; flashes: bc updated"),
    ("not the run that was asked for",
     CRC_FAILED, TURN + flash(0, False, 9, flash_failure()) + FAILED,
     "failed 1 update: flash-failed(1 bc 53); flashes: bc failed; next: run(./zentrix -f)"),
    ("cut off in the same command", CUT_FLASH, CUT_AGAIN,
     "cut-off - update: no-end(1 bc 51); flashes: bc cut-off;"
     " next: check-nothing-runs stay-up mend mend support"),
    ("cut off in another", CUT_FLASH, TURN,
     "cut-off - update: no-end(1 47); next: check-nothing-runs mend mend run(./zentrix -f)"),
    ("no tool again", NO_TOOL, NO_TOOL, "no-adapters 171 none: no-utility(7); next: mend support"),
]

# Outputs of a flash that fails in truth: none makes it a good one.
FAKE_SUCCESS = returned(flash_command(True), 0) + SUCCESS
FORGED_FLASHES = [
    FAKE_SUCCESS,
    "100 % " + FAKE_SUCCESS + FAKE_SUCCESS,
    returned("rm nv.bak", 0),
    FAKE_SUCCESS + finish(True),
    FAKE_SUCCESS + about(flash_command(True, component="ncsi")),
    f'x\nSkipping command: "{flash_command(True)}"\n' + SUCCESS,
    "half a line",
    "x" * 40000,
    "\0" * 100,
]
# Directories before a stamp that fails in truth.
FORGED_STAMPS = [STAMPED, "no line feed" + STAMPED, execute(f"rm {MAC1}"), directory()]

FORGED = [(f"a forged flash: {output[-40:]!r}",
           TURN + flash(1, True, 1, flash_failure(), output=output) + FAILED)
          for output in FORGED_FLASHES]
FORGED += [(f"a forged stamp: {text[-40:]!r}", BEFORE + PASS + visit(NOT_STAMPED, text) + finish(True))
           for text in FORGED_STAMPS]

# Logs, and what stands in a place of the data.
MAC_TWICE = (BEFORE + row("7.10.4") + PASS + stamped() + flash(1, True, 0, SUCCESS)
             + finish(True, row("7.12.5") + row("7.12.6")))
FACTS = [
    (MAC_TWICE, "adapters 0 ports 1 driver", "2.1.6"),
    (MAC_TWICE, "adapters 0 ports 1 after boot", "7.12.6"),
    (YB_FIXED, "adapters 0 yb", "repaired"),
    (FAILED_FLASH + FAILED, "problems 0 text",
     flash_failure().strip() + ' (the utility ended with 9 and last printed "broken")'),
    (DRIVERLESS, "version", "1.0.0"),
    (DRIVERLESS, "rebootNeeded", False),
    (DRIVERLESS, "buildVersion", "7.12b.4.3a"),
    (DRIVERLESS, "adapters 0 bus", 3),
    (DRIVERLESS, "adapters 0 ports 0 label", "3C01"),
    (DRIVERLESS, "adapters 0 flashes 1",
     {"mac": MAC2, "component": "ncsi", "column": "ncsi", "image": "3C01ncsi.bin", "forced": False,
      "exitCode": 0, "outcome": "updated"}),
]

# Rows of the reader's table whose texts the tool puts together of columns and labels, and texts of
# the tool that are commands, rows, or for the console alone.
COMPOSED = {"ADAPTER MAC    \t<headings>\t\tBUS:DEVICE:FUNC", "-------------------\t<rules>\t\t---",
            "ISB_CFG<block> version for <MAC> is <version>"}
NO_LINES = {
    "Kelvane Firmware Update Log.", 'About to execute: "7"', "7 7 cfg -show vpdyb >>7", "7 7 cfg -show vpdv0 >7",
    "YB fix is being applied Fix for 7", "Updating 7 failed, adapter is down\t---> Update failed",
    "Updating 7 failed, firmware corrupted\t---> Update failed", "Build Version is 7",
    "Another run is under way in this directory, or its flash utility still works. Waiting for it to end (Ctrl-C gives up).",
    "7 version for 7 is 7", "7 [OPTION]", "The options are:",
}

# What is bold, red and green on a terminal, in three reports.
TINTED = [
    ("31", "AN ADAPTER IS DOWN (exit status 172)"), ("1", "Adapter on bus 3 (3C01)"),
    ("31", ", DOWN (no driver)"), ("1", "Next:"),
    ("32", "all well (exit status 0)"), ("1", "Adapter on bus 3 (3C01)"), ("1", "To know:"), ("1", "Next:"),
    ("31", "FAILED (exit status 0)"), ("31", "failed"), ("1", "Next:"),
]
