// What no run brings about: forged lines, odd ends, lines of any length.
#include <gtest/gtest.h>

#include "data.h"
#include "log_text.h"
#include "names.h"

namespace report {
namespace {

// --- Lines that look like the tool's own

struct Forgery {
    const char* name;
    std::string output;  // of the flash, which fails in truth
    bool doubtful;
};

const std::string fakeSuccess = returned(flashCommand(true), 0) + "*** Update successful ***\n\n";
const std::string otherFlash =
    "./lnxfwvt2 020000000001 upgrade -noreset -F -ncsi 3C01ncsi.bin >>" + logName;

const Forgery forgeries[] = {
    {"nothing", "", false},
    {"its own success", fakeSuccess, false},
    {"its own success, twice", fakeSuccess + fakeSuccess, false},
    {"an outcome alone", "*** Update successful ***\n\n", false},
    {"a success in the middle of a line", "100 % " + fakeSuccess, false},
    {"a success, then a removal", fakeSuccess + execute("rm nv.bak"), false},
    {"a removal that is never done", fakeSuccess + about("rm nv.bak"), false},
    {"another command's success", returned("rm nv.bak", 0), false},
    {"the whole rest of a run", fakeSuccess + finish(true), false},
    {"a whole run",
     start() + table("9.9.9") + stamped() + comparing(1) + about(flashCommand(true)) + fakeSuccess +
         finish(true),
     false},
    {"a skipped command behind other text",
     "x\nSkipping command: \"" + flashCommand(true) + "\"\n*** Update successful ***\n", false},
    {"a skipped command",
     "\nSkipping command: \"" + flashCommand(true) + "\"\n*** Update successful ***\n\n", false},
    {"another flash that begins", fakeSuccess + about(otherFlash), true},
    {"an error about another port",
     "!!! Error updating firmware on 020000000009, adapter is down !!!\n", false},
    {"a table", table("9.9.9"), false},
    {"no line feed at its end", "half a line", false},
    {"a line without end", std::string(5 * lineLimit, 'x'), false},
    {"NULs", std::string(100, '\0'), false},
};

TEST(LogReader, ForgedOutputDecidesNothing) {
    for (const Forgery& forgery : forgeries) {
        SCOPED_TRACE(forgery.name);
        const std::string log = start() + table("7.10.4") + stamped() + comparing(1) +
                                execute(flashCommand(true), 1, forgery.output) + flashFailure +
                                execute("rm nv.bak") + finish(false, "7.10.4");
        const report::Run run = readText(log);
        const Summary summary = summarize(run);
        ASSERT_EQ(summary.adapters.size(), 1U);
        ASSERT_EQ(run.flashes.size(), 1U);
        EXPECT_EQ(run.before.size(), 1U);
        EXPECT_FALSE(summary.dryRun);
        bool doubtful = false;
        for (const Problem& problem : summary.problems) {
            doubtful = doubtful || problem.kind == "doubtful";
        }
        EXPECT_EQ(doubtful, forgery.doubtful);
        EXPECT_NE(summary.outcome, Outcome::clean);
        if (!forgery.doubtful) {
            EXPECT_EQ(run.flashes[0].outcome, FlashOutcome::failed);
            EXPECT_EQ(run.flashes[0].exitCode, 1);
            EXPECT_EQ(run.exitStatus, 1);
        }
    }
}

TEST(LogReader, ForgedListingsAndDirectoriesDecideNothing) {
    const std::string done =
        "*** Successfully completed vpd-v0 update on device 020000000001 ***\n\n";
    const std::string failed = " !!! Error performing vpd-v0 update on device 020000000001 !!!\n\n";
    const std::string texts[] = {"",
                                 done,
                                 "no line feed",
                                 done + finish(true, "9.9.9"),
                                 directory(),
                                 "Error! Unable to create resources for device 020000000001.\n",
                                 "Error 9: Cannot access 020000000001 information file.\n",
                                 execute("rm 020000000001")};
    for (const std::string& text : texts) {
        SCOPED_TRACE(text);
        const std::string log = title() + "No duplicate MACs found. Okay\n" +
                                listing(text + execute("rm devices") + table("9.9.9")) +
                                table("7.10.4") + visit(failed, text) + finish(true);
        const report::Run run = readText(log);
        ASSERT_EQ(run.visits.size(), 1U);
        EXPECT_FALSE(run.visits[0].stamped);
        ASSERT_EQ(run.before.size(), 1U);
        EXPECT_EQ(run.before[0].versions[0], "7.10.4");
        EXPECT_EQ(summarize(run).outcome, Outcome::failed);
    }
}

// --- Ends

const std::string cutOffFlash =
    start() + table("7.10.4") + stamped() + comparing(1) + about(flashCommand(true)) + "10 %";

struct Ending {
    const char* name;
    std::string log;
    const char* outcome;
    int exitStatus;  // -1 for none
    const char* operation;
    const char* next;  // the first text; empty for none
};

const std::string down = "!!! Error updating firmware on 020000000001, adapter is down !!!\n";

const Ending endings[] = {
    {"the usage text", "Kelvane Firmware Update Log.\n\n", "clean", 0, "none", ""},
    {"the title alone", title(), "cut-off", -1, "none",
     "See that there is room on the log's disk."},
    {"wrong options", title() + "Error! Incorrect usage of command line parameters.\n",
     "usage-error", 1, "none", "Mend the command line."},
    {"repaired MACs",
     title() +
         "\n\n  ***** REBOOT REQUIRED ***** \n\nDuplicated MAC Addresses have been detected and corrected. Please reboot and run the update package again to continue with the flash update.\n\n\n  ***** REBOOT REQUIRED ***** \n\n",
     "reboot-first", 1, "none", "Reboot."},
    {"no answer file",
     title() + "No duplicate MACs found. Okay\nError! Cannot create temporary file \"q\".\n",
     "failed", 1, "none", "Make the package directory writable and free space on its disk."},
    {"no tool",
     title() +
         "No duplicate MACs found. Okay\n\nError! Unable to locate Kelvane Veltrasia II tool (./lnxfwvt2).\n" +
         summaryLine(false) + execute("rm q"),
     "no-adapters", 171, "none", "Change into the package directory; complete the package."},
    {"no driver information",
     start() +
         "\n\nError! Failed to retrieve device driver information. Update cannot continue. See " +
         logName + " for more information.\n" + execute("rm q") + execute("rm 020000000001"),
     "failed", 1, "none", "Check the management library."},
    {"versions", start() + table("7.10.4") + execute("rm 020000000001") + execute("rm q"), "clean",
     0, "versions", ""},
    {"nothing to see", start() + execute("rm 020000000001") + execute("rm q"), "clean", 0, "none",
     ""},
    {"iSCSI versions",
     start() + "ISB_CFG  version for 020000000001 is 7.6.1\n" + execute("rm 020000000001") +
         execute("rm q"),
     "clean", 0, "iscsi-versions", ""},
    {"NCSI off, as all is",
     start() + "Disabling management firmware (NCSI) for 020000000001\n" +
         execute("./lnxfwvt2 020000000001 cfg -mgmt 0 >>" + logName, 1) +
         " !!! Error disabling management firmware (NCSI) on device 020000000001 !!!\n\n" +
         execute("rm q"),
     "failed", 0, "disable-management", "Run ./zentrix -nomfw again."},
    {"NCSI off",
     start() + "Disabling management firmware (NCSI) for 020000000001\n" +
         execute("./lnxfwvt2 020000000001 cfg -mgmt 0 >>" + logName, 95) +
         "*** Successfully Disabled management firmware (NCSI) on device 020000000001 (reboot required) ***\n\n" +
         execute("rm q"),
     "clean", 0, "disable-ncsi", "Reboot."},
    {"no build version",
     start() + table("7.10.4") +
         "\nUpdating Kelvane Veltrasia II adapters.\n\nThe device driver version for 020000000001 is 2.1.6.\n" +
         secondTable("7.10.4") + summaryLine(true) + execute("rm q"),
     "failed", 0, "update", "Put BuildVersion.txt back into the package directory."},
    {"an unchanged version",
     start() + table("7.10.4") + stamped() + comparing(0) + execute(flashCommand(false)) +
         "*** Update successful ***\n\n" + finish(true, "7.10.4"),
     "failed", 0, "update", "Run ./zentrix -f."},
    {"a forced flash of an older stamp that changes nothing",
     start() + table("7.10.4") + stamped() + comparing(1) + execute(flashCommand(true)) +
         "*** Update successful ***\n\n" + finish(true, "7.10.4"),
     "failed", 0, "update", "Run ./zentrix -f."},
    {"a forced flash of the same version",
     start() + table("7.10.4") + stamped() + comparing(0) + execute(flashCommand(true)) +
         "*** Update successful ***\n\n" + finish(true, "7.10.4"),
     "clean", 0, "update", ""},
    {"an image that isn't accepted",
     start() + table("7.10.4") + stamped() + comparing(0) + execute(flashCommand(false), 70) +
         "*** No update needed because need_to_force_update=0 ***\n\n" + finish(true, "7.10.4"),
     "clean", 0, "update",
     "See whether the package belongs to these adapters: an image was not accepted."},
    {"reboot needed",
     start() + table("7.10.4") + stamped() + comparing(1) + execute(flashCommand(true), 95) +
         "*** Update successful, reboot needed ***\n\n" + finish(true, "7.10.4"),
     "clean", 0, "update", "Reboot."},
    {"ports that differ",
     start() + table("7.10.4") + table("NA", "020000000002", false) + execute("rm q"), "failed", 0,
     "versions", "Look at the versions again with -v."},
    {"a component that the first table lacks",
     start() + table("NA") + stamped() + finish(true, "7.12.5"), "failed", 0, "update",
     "Look at the versions again with -v."},
    {"a directory that could not be read, and firmware that seems to be corrupted",
     title() + "No duplicate MACs found. Okay\n" + execute("./lnxfwvt2 <q >devices") + "\n" +
         execute("rm devices") + execute("./lnxfwvt2 020000000001 dir >020000000001", 1) +
         table("NA") +
         visit("*** Successfully completed vpd-v0 update on device 020000000001 ***\n\n") +
         "!!! Error updating firmware on 020000000001 because the installed firmware is corrupted. Contact Marvek support. !!!\n" +
         finish(false, "NA"),
     "failed", 1, "update", "Run ./zentrix -f."},
    {"a dry run",
     start() + table("7.10.4") + stamped() + comparing(1) + about(flashCommand(true)) +
         "\nSkipping command: \"" + flashCommand(true) + "\"\n*** Update successful ***\n\n" +
         finish(true, "7.10.4"),
     "clean", 0, "update", "Remove /tmp/kvsupdbg-no-f-update.txt."},
    {"an adapter that is down, after a failure",
     start() + table("7.10.4") + stamped() + down + finish(false, "7.10.4"), "adapter-down", 172,
     "update", "Load a driver for 020000000001."},
    {"a list that breaks off",
     title() + "No duplicate MACs found. Okay\n" +
         listing(" No. Device MAC \n ---\n 1 3C01 020000000001\n 2 3C0") + table("7.10.4") +
         execute("rm q"),
     "failed", 0, "versions", "Run ./zentrix -v again."},
    {"a flash that is cut off", cutOffFlash, "cut-off", -1, "update",
     "Do not reboot before the next run has ended well."},
    {"a summary whose removal is cut off",
     start() + table("7.10.4") + stamped() + summaryLine(true) + about("rm q"), "cut-off", -1,
     "update", "See that there is room on the log's disk."},
};

TEST(LogReader, Endings) {
    for (const Ending& ending : endings) {
        SCOPED_TRACE(ending.name);
        const report::Run run = readText(ending.log);
        const Summary summary = summarize(run);
        EXPECT_STREQ(nameOf(summary.outcome), ending.outcome);
        EXPECT_EQ(run.exitStatus.value_or(-1), ending.exitStatus);
        EXPECT_STREQ(nameOf(run.operation), ending.operation);
        const size_t first = summary.outcome == Outcome::cutOff ? 1 : 0;
        EXPECT_EQ(summary.next.empty() ? "" : summary.next[first].text, ending.next);
    }
}

TEST(LogReader, CutOffNamesCommandPortAndComponent) {
    const report::Run run = readText(cutOffFlash);
    const Summary summary = summarize(run);
    EXPECT_EQ(run.cutIn, flashCommand(true));
    ASSERT_EQ(run.flashes.size(), 1U);
    EXPECT_EQ(run.flashes[0].outcome, FlashOutcome::cutOff);
    EXPECT_NE(
        summary.problems.back().adapters.find("port 020000000001 may be half flashed: its bc"),
        std::string::npos);
    ASSERT_EQ(summary.next.size(), 5U);
    EXPECT_EQ(summary.next[0].code, StepCode::checkNothingRuns);
    EXPECT_EQ(summary.next[1].code, StepCode::stayUp);
    EXPECT_EQ(summary.next[4].command, "./zentrix -f");
}

TEST(LogReader, WhatFailsAfterThePassLeavesTheAdaptersAsUpdated) {
    const std::string missing =
        "\nError! Unable to locate Kelvane Veltrasia II tool (./lnxfwvt2).\n";
    const report::Run run =
        readText(start() + table("7.10.4") + stamped() + execute("rm 020000000001") + missing +
                 summaryLine(true) + execute("rm q"));
    const Summary summary = summarize(run);
    ASSERT_EQ(summary.problems.size(), 1U);
    EXPECT_EQ(summary.problems[0].adapters, "the adapters are as the update left them.");
    EXPECT_EQ(run.exitStatus, 0);
}

// --- Bytes

TEST(LogReader, PiecesOfAnySizeReadTheSame) {
    const std::string& log = endings[15].log;
    const report::Run whole = readText(log);
    const std::string expected = toData("x", whole, summarize(whole)).dump();
    for (const size_t size : {1U, 2U, 7U, 255U}) {
        const report::Run run = readText(log, size);
        EXPECT_EQ(toData("x", run, summarize(run)).dump(), expected) << size;
    }
}

TEST(LineCutter, HoldsBothEndsOfALongLine) {
    LineCutter cutter;
    std::string taken;
    const std::string line = "begin" + std::string(3 * lineLimit, '-') + "end";
    for (size_t at = 0; at < line.size(); at += 1000) {
        cutLines(cutter, std::string_view(line).substr(at, 1000), [](std::string_view, size_t) {});
        EXPECT_LE(cutter.held.size(), lineLimit);
    }
    cutLines(cutter, "\nnext\n", [&taken](std::string_view text, size_t number) {
        taken += std::to_string(number) + std::string(text.substr(0, 5)) +
                 std::string(text.substr(text.size() - 3));
    });
    EXPECT_EQ(taken, "1beginend2nextext");
}

}  // namespace
}  // namespace report
