// What small logs come to: outcome, problems and advice; forged lines, odd ends, odd bytes.
#include <gtest/gtest.h>

#include "data.h"
#include "log_text.h"
#include "names.h"

namespace report {
namespace {

std::string kindsOf(const std::vector<Problem>& problems) {
    std::string kinds;
    for (const Problem& problem : problems) {
        kinds += " " + problem.kind;
    }
    return kinds;
}

// "outcome status operation: kinds of problems; remarks: kinds; next: codes, a run's command"
std::string describe(const Run& run, const Summary& summary) {
    std::string text = wordsOf(summary.outcome).name;
    text += run.exitStatus ? " " + std::to_string(*run.exitStatus) : " -";
    text += std::string(" ") + wordsOf(run.operation).name + ":" + kindsOf(summary.problems);
    text += summary.remarks.empty() ? "" : "; remarks:" + kindsOf(summary.remarks);
    text += summary.next.empty() ? "" : "; next:";
    for (const Step& step : summary.next) {
        text += std::string(" ") + nameOf(step.code);
        text += step.command.empty() ? "" : "(" + step.command + ")";
    }
    return text;
}

std::string describe(const std::string& log) {
    const Run run = readText(log);
    return describe(run, summarize(run));
}

struct Case {
    const char* name;
    std::string log;
    const char* told;
};

const std::string mac1 = "020000000001";
const std::string mac2 = "020000000002";
const std::string before = start() + table("7.10.4");
const std::string both = start() + tableHead + row("7.10.4") + row("7.10.4", mac2);
const std::string withIscsi = start() + tableHead + row("7.10.4", mac1, "7.6.3");
const std::string cutOffFlash =
    before + pass + stamped() + comparing(1) + about(flashCommand(true)) + "10 %";
const std::string down = "!!! Error updating firmware on 020000000001, adapter is down !!!\n";
const std::string failedFlash =
    comparing(1) + execute(flashCommand(true), 9, "x\nbroken\n") + flashFailure();
const std::string rackRows = row("7.12.5") + row("7.12.5", mac2);

std::string flash(int force, bool forced, int code, const std::string& outcome,
                  const std::string& mac = mac1) {
    return comparing(force, mac) + execute(flashCommand(forced, mac), code) + outcome;
}

std::string removal(const char* block, int code, const char* label) {
    return execute(std::string("./lnxfwvt2 020000000001 dir -delete ") + block + " >>" + logName,
                   code) +
           "*** iscsi " + label + (code == 0 ? " removed successfully" : " removal failed") +
           " ***\n";
}

std::string ncsiOff(int code, const std::string& outcome) {
    return start() + "Disabling management firmware (NCSI) for 020000000001\n" +
           execute("./lnxfwvt2 020000000001 cfg -mgmt 0 >>" + logName, code) + outcome;
}

const Case cases[] = {
    // Runs that end early
    {"a heading", "Kelvane Firmware Update Log.\n\n",
     "heading-alone - none: heading-alone; next: check-nothing-runs run"},
    {"a title", title(), "cut-off - none: no-end; next: check-nothing-runs mend run"},
    {"wrong options", title() + "Error! Incorrect usage of command line parameters.\n",
     "usage-error 1 none: usage-error; next: mend run"},
    {"repaired MACs",
     title() +
         "\n\n  ***** REBOOT REQUIRED ***** \n\nDuplicated MAC Addresses have been detected and corrected. Please reboot and run the update package again to continue with the flash update.\n\n\n  ***** REBOOT REQUIRED ***** \n\n",
     "reboot-first 1 none: macs-corrected; next: reboot run"},
    {"no answer file",
     title() + "No duplicate MACs found. Okay\nError! Cannot create temporary file \"q\".\n",
     "failed 1 none: no-temporary-file; next: mend run"},
    {"no tool",
     title() +
         "No duplicate MACs found. Okay\n\nError! Unable to locate Kelvane Veltrasia II tool (./lnxfwvt2).\n" +
         summaryLine(false) + execute("rm q"),
     "no-adapters 171 none: no-utility; next: mend run"},
    {"no driver information",
     start() +
         "\n\nError! Failed to retrieve device driver information. Update cannot continue. See " +
         logName + " for more information.\n" + execute("rm q"),
     "failed 1 none: no-driver-information; next: mend run"},
    {"a text that only the manual page has",
     before + "Error! Unable to write to log file.\n" + execute("rm q"),
     "failed 0 versions: other; next: run(./zentrix -v)"},
    // Other operations
    {"versions", before + execute("rm 020000000001") + execute("rm q"), "clean 0 versions:"},
    {"nothing to see", start() + execute("rm 020000000001") + execute("rm q"), "clean 0 none:"},
    {"iSCSI versions", start() + "ISB_CFG  version for 020000000001 is 7.6.1\n" + execute("rm q"),
     "clean 0 iscsi-versions:"},
    {"ports that differ",
     both.substr(0, both.size() - row("7.10.4", mac2).size()) + row("NA", mac2) + execute("rm q"),
     "failed 0 versions: answers-differ; next: run(./zentrix -v)"},
    {"a list that breaks off",
     title() + "No duplicate MACs found. Okay\n" +
         listing(" No. Device MAC \n ---\n 1 3C01 020000000001\n 2 3C0") + table("7.10.4") +
         execute("rm q"),
     "failed 0 versions: not-read; next: run(./zentrix -v)"},
    {"NCSI off, as all is",
     ncsiOff(1, " !!! Error disabling management firmware (NCSI) on device 020000000001 !!!\n\n") +
         execute("rm q"),
     "failed 0 disable-management: switch-failed; next: run(./zentrix -nomfw)"},
    {"NCSI off",
     ncsiOff(
         95,
         "*** Successfully Disabled management firmware (NCSI) on device 020000000001 (reboot required) ***\n\n") +
         execute("rm q"),
     "clean 0 disable-ncsi:; next: reboot"},
    {"NCSI off, or all of it, cut off", ncsiOff(0, ""),
     "cut-off - disable-ncsi: no-end; next: check-nothing-runs mend run"},
    // Updates
    {"no build version",
     before + pass + "\nThe device driver version for 020000000001 is 2.1.6.\n" +
         finish(true, row("7.10.4")),
     "failed 0 update: no-build-version; next: mend run"},
    {"a clean update", before + pass + stamped() + flash(1, true, 0, success) + finish(true),
     "clean 0 update:"},
    {"the same version again, forced by the stamp",
     before + pass + stamped() + flash(1, true, 0, success) + finish(true, row("7.10.4")),
     "clean 0 update:; remarks: unchanged"},
    {"the same version again, not forced",
     before + pass + stamped() + flash(0, false, 0, success) + finish(true, row("7.10.4")),
     "failed 0 update: not-written; next: run(./zentrix -f)"},
    {"an image that isn't accepted",
     before + pass + stamped() + flash(0, false, 70, refused) + finish(true, row("7.10.4")),
     "failed 0 update: not-accepted; next: mend run(./zentrix)"},
    {"an image that isn't accepted, forced by the stamp",
     before + pass + stamped() + flash(1, true, 70, flashFailure()) + crc(true) +
         finish(false, row("7.10.4")),
     "failed 1 update: flash-failed; next: mend run"},
    {"a failed flash",
     before + pass + stamped() + failedFlash + crc(true) + finish(false, row("7.10.4")),
     "failed 1 update: flash-failed; next: run(./zentrix -f)"},
    {"a failed flash and a damaged adapter",
     before + pass + stamped() + failedFlash + crc(false) + finish(false, row("7.10.4")),
     "failed 1 update: flash-failed crc-failed; next: stay-up run(./zentrix -f)"},
    {"a failed flash that another port healed",
     both + pass + stamped() + failedFlash + crc(false) + stamped(mac2) +
         flash(0, false, 0, success, mac2) + crc(true, mac2) + finish(false, rackRows),
     "failed 1 update: flash-failed crc-failed"},
    {"a port that is down",
     before + pass + stamped() + down + crc(true) + finish(false, row("7.10.4")),
     "adapter-down 172 update: adapter-down; next: load-driver run(./zentrix -f)"},
    {"a port that is down, and one that isn't",
     both + pass + stamped() + down + crc(true) + stamped(mac2) + flash(1, true, 0, success, mac2) +
         crc(true, mac2) + finish(false, rackRows),
     "adapter-down 172 update: adapter-down; next: load-driver"},
    {"reboot needed",
     before + pass + stamped() +
         flash(1, true, 95, "*** Update successful, reboot needed ***\n\n") +
         finish(true, row("7.10.4")),
     "clean 0 update:; next: reboot"},
    {"a code that nobody knows, and success",
     before + pass + stamped() + flash(1, true, 96, success) + finish(true),
     "failed 0 update: doubtful; next: mend run(./zentrix -f)"},
    {"a failure, and code 0",
     before + pass + stamped() + flash(1, true, 0, flashFailure()) + finish(true),
     "failed 0 update: doubtful flash-failed; next: mend run(./zentrix -f)"},
    {"a flash without outcome", before + pass + stamped() + flash(1, true, 0, "") + finish(true),
     "failed 0 update: doubtful; next: mend run(./zentrix -f)"},
    {"an update without summary", before + pass + stamped() + execute("rm q"),
     "cut-off - update: no-end; next: check-nothing-runs mend mend run(./zentrix -f)"},
    {"a component that the first table lacks",
     start() + table("NA") + pass + stamped() + finish(true),
     "failed 0 update: answers-differ; next: run(./zentrix -f)"},
    {"a directory that could not be read, and firmware that seems to be corrupted",
     title() + "No duplicate MACs found. Okay\n" + execute("./lnxfwvt2 <q >devices") + "\n" +
         execute("rm devices") + execute("./lnxfwvt2 020000000001 dir >020000000001", 1) +
         table("NA") + pass + stamped() +
         "!!! Error updating firmware on 020000000001 because the installed firmware is corrupted. Contact Marvek support. !!!\n" +
         crc(true) + finish(false, row("NA")),
     "failed 1 update: not-read firmware-corrupted; next: run(./zentrix -f)"},
    {"a dry run",
     before + pass + stamped() + comparing(1) + about(flashCommand(true)) +
         "\nSkipping command: \"" + flashCommand(true) + "\"\n" + success +
         finish(true, row("7.10.4")),
     "clean 0 update: held-back; next: mend run(./zentrix -f)"},
    {"a bus that nobody knows, and one of ten digits",
     start() + tableHead + row("7.10.4", mac1, "NA", "-1") +
         row("7.10.4", mac2, "NA", "-2147483648") + execute("rm q"),
     "failed 0 versions: unknown-to-library; next: mend run(./zentrix -v)"},
    // The run to repeat
    {"a cut flash", cutOffFlash,
     "cut-off - update: no-end; next: check-nothing-runs stay-up mend mend run(./zentrix -f)"},
    {"a cut flash of a plain run",
     before + pass + stamped() + comparing(0) + about(flashCommand(false)),
     "cut-off - update: no-end; next: check-nothing-runs stay-up mend mend run(./zentrix -f)"},
    {"a cut flash of what may have been to remove blocks",
     withIscsi + pass + stamped() + comparing(1) + about(flashCommand(true)),
     "cut-off - update: no-end; next: check-nothing-runs stay-up mend mend run"},
    {"blocks that were to be removed",
     withIscsi + pass + stamped() + removal("isb_cfg", 0, "cfg") + about("x"),
     "cut-off - update: no-end; next: check-nothing-runs mend mend run(./zentrix -iscsicfgupdate)"},
    {"a block that isn't there",
     withIscsi + pass + stamped() + removal("isb_cfg2", 6, "cfg2") +
         finish(true, row("7.10.4", mac1, "7.6.3")),
     "clean 0 update:; remarks: no-block"},
    {"a block that is left",
     withIscsi + pass +
         visit("*** Successfully completed vpd-v0 update on device 020000000001 ***\n\n",
               "isb_cfg2 1\n") +
         removal("isb_cfg2", 6, "cfg2") + finish(true, row("7.10.4", mac1, "7.6.3")),
     "failed 0 update: block-not-removed; next: run(./zentrix -iscsicfgupdate)"},
    {"a summary whose removal is cut off",
     before + pass + stamped() + execute("rm 020000000001") + summaryLine(true) + about("rm q"),
     "cut-off - update: no-end; next: check-nothing-runs mend mend run"},
};

TEST(Report, TellsWhatWasAndWhatIsNext) {
    for (const Case& one : cases) {
        EXPECT_EQ(describe(one.log), one.told) << one.name;
    }
}

// --- Lines that look like the tool's own

// None makes a flash that fails in truth a good one.
TEST(Report, ForgedLinesDecideNothing) {
    const std::string fakeSuccess = returned(flashCommand(true), 0) + success;
    const std::string outputs[] = {
        fakeSuccess,
        "100 % " + fakeSuccess + fakeSuccess,
        returned("rm nv.bak", 0),
        fakeSuccess + finish(true),
        fakeSuccess + about(flashCommand(true, mac1, "ncsi")),
        "x\nSkipping command: \"" + flashCommand(true) + "\"\n" + success,
        "half a line",
        std::string(5 * lineLimit, 'x'),
        std::string(100, '\0'),
    };
    for (const std::string& output : outputs) {
        const report::Run run = readText(before + pass + stamped() + comparing(1) +
                                         execute(flashCommand(true), 1, output) + flashFailure() +
                                         finish(false, row("7.10.4")));
        const Summary summary = summarize(run);
        EXPECT_NE(summary.outcome, Outcome::clean) << output;
        EXPECT_EQ(run.flashes[0].outcome, FlashOutcome::failed) << output;
        EXPECT_FALSE(run.dryRun);
    }
    const std::string done =
        "*** Successfully completed vpd-v0 update on device " + mac1 + " ***\n";
    const std::string failed = " !!! Error performing vpd-v0 update on device " + mac1 + " !!!\n";
    for (const std::string& text :
         {done, "no line feed" + done, execute("rm " + mac1), directory()}) {
        const report::Run run = readText(before + pass + visit(failed, text) + finish(true));
        EXPECT_EQ(summarize(run).outcome, Outcome::failed) << text;
    }
    EXPECT_EQ(describe(title() + "No duplicate MACs found. Okay\n" +
                       listing(execute("rm devices") + table("9.9.9")) + execute("rm q")),
              "failed 0 versions: doubtful; next: mend run(./zentrix -v)");
}

// --- What stands in the texts

TEST(Report, NamesWhatIsKnown) {
    const report::Run cut = readText(cutOffFlash);
    const Problem cutProblem = summarize(cut).problems[0];
    EXPECT_EQ(cut.cutIn, flashCommand(true));
    EXPECT_NE(cutProblem.adapters.find("port 020000000001 may be half flashed: its bc"),
              std::string::npos);
    const report::Run failed = readText(before + pass + stamped() + failedFlash + finish(false));
    const Problem problem = summarize(failed).problems[0];
    EXPECT_NE(problem.text.find("ended with 9 and last printed \"broken\""), std::string::npos);
    EXPECT_EQ(problem.mac + problem.component, mac1 + "bc");
    const std::string unsure =
        summarize(readText(withIscsi + pass + stamped() + comparing(1) + about(flashCommand(true))))
            .next.back()
            .text;
    EXPECT_EQ(
        unsure,
        "Run ./zentrix -f or ./zentrix -iscsicfgupdate again, whichever it was; the log doesn't tell.");
    const std::string late =
        describe(before + pass + stamped() + execute("rm 020000000001") +
                 "\nError! Unable to locate Kelvane Veltrasia II tool (./x).\n" +
                 summaryLine(true) + execute("rm q"));
    EXPECT_EQ(late, "failed 0 update: no-utility; next: mend run");
}

TEST(Report, EndsWithSupportWhenTheSameComesAgain) {
    const std::string log =
        before + pass + stamped() + failedFlash + crc(false) + finish(false, row("7.10.4"));
    const std::string refusal =
        before + pass + stamped() + flash(0, true, 70, refused) + finish(true, row("7.10.4"));
    const std::string healed =
        before + pass + stamped() + flash(0, true, 0, success) + finish(true);
    const std::string other = before + pass + stamped() + flash(0, false, 9, flashFailure()) +
                              finish(false, row("7.10.4"));
    const struct {
        std::string second;
        const char* told;
    } runs[] = {
        {log, "failed 1 update: flash-failed crc-failed; next: stay-up support"},
        {refusal, "failed 0 update: not-accepted; next: mend support"},
        {healed, "clean 0 update:"},
        // Not the run that was asked for.
        {other, "failed 1 update: flash-failed; next: run(./zentrix -f)"},
    };
    for (const auto& one : runs) {
        History history;
        const report::Run first = readText(log);
        summarize(first, &history);
        const report::Run second = readText(one.second);
        EXPECT_EQ(describe(second, summarize(second, &history)), one.told);
    }
}

TEST(Report, ReadsBothEntriesOfAMacGivenTwice) {
    const std::string rows = row("7.10.4") + row("7.10.4");
    const report::Run run =
        readText(start() + tableHead + rows + pass + stamped() + flash(1, true, 0, success) +
                 finish(true, row("7.12.5") + row("7.12.6")));
    const Summary summary = summarize(run);
    ASSERT_EQ(summary.adapters[0].ports.size(), 2U);
    for (const PortSummary& port : summary.adapters[0].ports) {
        EXPECT_EQ(port.visit->driver, "2.1.6");
    }
    EXPECT_EQ(summary.adapters[0].ports[1].after->versions[0], "7.12.6");
}

// --- Bytes

TEST(Report, ReadsPiecesOfAnySizeAndMailedLogs) {
    std::string mailed;
    for (const char c : cutOffFlash) {
        mailed += c == '\n' ? "\r\n" : std::string(1, c);
    }
    const report::Run whole = readText(cutOffFlash);
    const Json expected = toData("x", whole, summarize(whole));
    for (const std::string& log : std::vector<std::string>{cutOffFlash, mailed}) {
        for (const size_t size : {1U, 7U, 255U}) {
            const report::Run run = readText(log, size);
            EXPECT_EQ(toData("x", run, summarize(run)), expected) << size;
        }
    }
}

TEST(Report, HoldsBothEndsOfALongLine) {
    LineCutter cutter;
    std::string taken;
    const std::string line = "begin" + std::string(3 * lineLimit, '-') + "end\nnext\n";
    for (size_t at = 0; at < line.size(); at += 1000) {
        cutLines(cutter, std::string_view(line).substr(at, 1000),
                 [&taken](std::string_view text, size_t number) {
                     taken += std::to_string(number) + std::string(text.substr(0, 5)) +
                              std::string(text.substr(text.size() - 3));
                 });
        EXPECT_LE(cutter.held.size(), lineLimit);
    }
    EXPECT_EQ(taken, "1beginend2nextext");
}

}  // namespace
}  // namespace report
