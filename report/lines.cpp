#include "lines.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "commands.h"
#include "inventory/supported_device.h"
#include "log/flash_tool_code.h"
#include "update/exit_status.h"

namespace report {

// --- Trouble, and the run as a whole

static void note(LogReader& reader, const ToolLine& line) {
    addFinding(reader, line.line.advice, line.text);
}

static void notePort(LogReader& reader, const ToolLine& line) {
    addFinding(reader, line.line.advice, line.text, line.fields[0]);
}

static void stop(LogReader& reader, const ToolLine& line) {
    note(reader, line);
    reader.run.exitStatus = fwup::exitErrors;
}

static void stopAtUsage(LogReader& reader, const ToolLine& line) {
    stop(reader, line);
    reader.run.usageError = true;
}

static void stopForReboot(LogReader& reader, const ToolLine& line) {
    stop(reader, line);
    reader.run.rebootFirst = true;
}

static void missTemporaryFile(LogReader& reader, const ToolLine& line) {
    note(reader, line);
    if (line.fields[0] == "q") {
        reader.run.exitStatus = fwup::exitErrors;
    }
}

// Within the pass it is the list for a CRC check, without which the pass ends.
static void missDeviceList(LogReader& reader, const ToolLine& line) {
    note(reader, line);
    if (reader.run.operation == Operation::update && !reader.passOver) {
        reader.passStatus = fwup::exitErrors;
    }
}

static void missDirectory(LogReader& reader, const ToolLine& line) {
    notePort(reader, line);
    if (!reader.passOver) {
        reader.run.unread.emplace_back(line.fields[0]);
    }
}

static void takeTitle(LogReader& reader, const ToolLine& line) {
    reader.run.version = std::string(line.fields[0]);
}

static void endWithErrors(LogReader& reader, const ToolLine& /*line*/) {
    const bool isUpdate = reader.run.operation == Operation::update;
    const int status = reader.passStatus == fwup::exitClean ? fwup::exitErrors : reader.passStatus;
    reader.run.exitStatus = isUpdate ? status : fwup::exitNoDevices;
}

static void endClean(LogReader& reader, const ToolLine& /*line*/) {
    reader.run.exitStatus = fwup::exitClean;
}

static void startTable(LogReader& reader, const ToolLine& /*line*/) {
    reader.inTable = true;
    reader.tableIsSecond = reader.run.operation == Operation::update;
    reader.run.hasAfter = reader.run.hasAfter || reader.tableIsSecond;
    if (reader.run.operation == Operation::none) {
        reader.run.operation = Operation::versions;
    }
}

static void goOnWithTable(LogReader& reader, const ToolLine& /*line*/) {
    reader.inTable = true;
}

static void beginPass(LogReader& reader, const ToolLine& /*line*/) {
    reader.run.operation = Operation::update;
    reader.listed = true;
}

static void takeIscsiVersion(LogReader& reader, const ToolLine& /*line*/) {
    reader.run.operation = Operation::iscsiVersions;
}

static void beginDirectory(LogReader& reader, const ToolLine& line) {
    if (!isKnown(reader, line.fields[0])) {
        return;
    }
    reader.directoryOf = std::string(line.fields[0]);
    if (reader.awaited == Awaited::nothing && reader.run.operation == Operation::none) {
        reader.run.operation = Operation::directory;
    }
    reader.run.directories.push_back({reader.directoryOf, {}});
    beginQuote(reader, Quote::directory);
}

// --- One port's turn

static void beginVisit(LogReader& reader, const ToolLine& line) {
    Visit visit;
    visit.mac = std::string(line.fields[0]);
    visit.driver = std::string(line.fields[1]);
    visit.line = reader.number;
    reader.run.visits.push_back(std::move(visit));
    reader.stampForces = -1;
}

static void beginStampCheck(LogReader& reader, const ToolLine& line) {
    if (Visit* visit = visitOf(reader, line.fields[0])) {
        visit->stampRead = true;
        int subsystem = 0;
        if (readNumber(line.fields[2], subsystem)) {
            visit->subsystem = subsystem;
        }
    }
}

static void failStampCheck(LogReader& reader, const ToolLine& line) {
    notePort(reader, line);
    reader.passStatus = fwup::exitErrors;
}

static void beginStamp(LogReader& reader, const ToolLine& line) {
    if (Visit* visit = visitOf(reader, line.fields[1])) {
        visit->build = std::string(line.fields[0]);
    }
}

static void endStamp(LogReader& reader, const ToolLine& line) {
    Visit* visit = visitOf(reader, line.fields[0]);
    if (line.line.advice.kind != nullptr) {
        notePort(reader, line);
    } else if (visit != nullptr) {
        visit->stamped = true;
    }
}

template <bool Visit::*what, int status>
static void leaveOutPort(LogReader& reader, const ToolLine& line) {
    if (Visit* visit = visitOf(reader, line.fields[0])) {
        visit->*what = true;
        reader.passStatus = status;
        notePort(reader, line);
    }
}

static void compareStamp(LogReader& reader, const ToolLine& line) {
    int forces = 0;
    if (reader.run.visits.empty() || !readNumber(line.fields[2], forces)) {
        return;
    }
    Visit& visit = reader.run.visits.back();
    reader.stampForces = forces;
    if (!visit.onCard) {
        visit.onCard = std::string(line.fields[0]);
    }
    if (line.fields[1].empty() && visit.build && !visit.build->empty()) {
        addFinding(reader, adviceFor(Matter::buildVersionLost), line.text, visit.mac);
    }
}

template <CrcOutcome outcome>
static void endCrc(LogReader& reader, const ToolLine& line) {
    if (Visit* visit = visitOf(reader, line.fields[0])) {
        visit->crc = outcome;
    }
    if (outcome != CrcOutcome::passed) {
        notePort(reader, line);
    }
}

template <YbOutcome outcome>
static void endYb(LogReader& reader, const ToolLine& line) {
    Visit* visit = visitOf(reader, line.fields[0]);
    if (visit != nullptr && !visit->stampRead) {
        visit->yb = outcome;
    }
    if (outcome == YbOutcome::failed) {
        notePort(reader, line);
    }
}

// --- Flashes

static bool isImageOf(const std::string& image, const char* part) {
    for (const fwup::SupportedDevice* device = fwup::SUPDID; device->did != nullptr; device++) {
        char name[fwup::imageNameSize];
        fwup::writeImageName(name, device->did, part);
        if (image == name) {
            return true;
        }
    }
    return false;
}

static const fwup::Component* componentOfImage(const std::string& image) {
    for (const fwup::Component& component : fwup::components) {
        if (isImageOf(image, component.name) ||
            (component.fcodeImage != nullptr && isImageOf(image, component.fcodeImage))) {
            return &component;
        }
    }
    return nullptr;
}

static void beginFlash(LogReader& reader, const ToolLine& line) {
    if (visitOf(reader, line.fields[0]) == nullptr) {
        return;
    }
    Flash flash;
    flash.mac = std::string(line.fields[0]);
    flash.image = std::string(line.fields[1]);
    flash.component = componentOfImage(flash.image);
    flash.stampForces = std::exchange(reader.stampForces, -1);
    flash.line = reader.number;
    reader.run.flashes.push_back(std::move(flash));
}

static bool isOfLastFlash(LogReader& reader, const ToolLine& line) {
    const Flash* flash = lastFlash(reader);
    return flash != nullptr && flash->mac == line.fields[1] && flash->image == line.fields[2];
}

static void missImage(LogReader& reader, const ToolLine& line) {
    if (!isOfLastFlash(reader, line) || lastFlash(reader)->outcome != FlashOutcome::cutOff) {
        doubt(reader, line.text);
        return;
    }
    lastFlash(reader)->outcome = FlashOutcome::imageMissing;
    addFinding(reader, line.line.advice, line.text, line.fields[1], line.fields[0]);
    reader.passStatus = fwup::exitErrors;
}

static std::string withExit(const LogReader& reader, std::string_view text) {
    const std::string said = reader.lastQuoted.empty()
                                 ? "printed nothing"
                                 : "last printed \"" + reader.lastQuoted + "\"";
    return std::string(text) + " (the utility ended with " + std::to_string(reader.code) + " and " +
           said + ")";
}

// The tool's own word and the exit code must agree; otherwise the log is damaged.
template <FlashOutcome outcome>
static void endFlash(LogReader& reader, const ToolLine& line) {
    Flash* flash = lastFlash(reader);
    if (flash == nullptr) {
        return;
    }
    const bool heldBack =
        flash->outcome == FlashOutcome::heldBack && outcome == FlashOutcome::updated;
    if (!heldBack && flash->outcome != outcome) {
        doubt(reader, line.text);
        flash->outcome = FlashOutcome::failed;
    }
    if (outcome == FlashOutcome::failed) {
        addFinding(reader, line.line.advice, withExit(reader, line.text), line.fields[1],
                   line.fields[0]);
        reader.passStatus = fwup::exitErrors;
    } else if (flash->outcome == FlashOutcome::refused) {
        addFinding(reader, adviceFor(Matter::refused),
                   withExit(reader, "Updating " + flash->mac + " using file " + flash->image),
                   flash->mac, flash->component == nullptr ? "" : flash->component->name);
    }
}

template <bool done>
static void endRemoval(LogReader& reader, const ToolLine& line) {
    if (reader.run.removals.empty()) {
        return;
    }
    Removal& removal = reader.run.removals.back();
    removal.done = done;
    if (!done) {
        addFinding(reader, line.line.advice, withExit(reader, line.text), removal.mac,
                   removal.block->name);
    }
}

static void holdBack(LogReader& reader, const ToolLine& line) {
    if (reader.isOpen && line.fields[0] == reader.open) {
        skipCommand(reader, line.text, line.line.advice);
    }
}

// --- Management firmware

// The lines of the two maintenance modes differ in the case of one letter; until
// an outcome shows it, a run of NCSI alone may be either.
static void beginSwitch(LogReader& reader, const ToolLine& line) {
    Run& run = reader.run;
    run.switches.push_back({std::string(line.fields[2]), std::string(line.fields[1]),
                            SwitchOutcome::cutOff, reader.number});
    if (line.fields[0] == "Enabl") {
        run.operation = Operation::enableNcsi;
    } else if (line.fields[1] != "NCSI") {
        run.operation = Operation::disableManagement;
        run.mayDisableAll = false;
    } else if (run.operation == Operation::none) {
        run.operation = Operation::disableNcsi;
        run.mayDisableAll = true;
    }
}

template <SwitchOutcome outcome>
static void endSwitch(LogReader& reader, const ToolLine& line) {
    if (reader.run.switches.empty()) {
        return;
    }
    Switch& current = reader.run.switches.back();
    current.outcome = outcome;
    reader.run.mayDisableAll = false;
    if (line.fields[0] == "disabl") {
        reader.run.operation = Operation::disableManagement;
    }
    if (outcome == SwitchOutcome::failed) {
        addFinding(reader, line.line.advice, withExit(reader, line.text), current.mac,
                   current.firmware);
    }
}

static void failSwitchOfAll(LogReader& reader, const ToolLine& line) {
    endSwitch<SwitchOutcome::failed>(reader, line);
    reader.run.operation = Operation::disableManagement;
}

// --- The table

using Effect = void (*)(LogReader&, const ToolLine&);

// A line that tells of trouble. Its text stands on the manual page.
static constexpr Line trouble(const char* text, const char* kind, unsigned actions, Effect effect,
                              const char* errand = nullptr, Awaited outcomeOf = Awaited::nothing) {
    return {text, effect, outcomeOf, explained(text, kind, actions, errand)};
}

static constexpr const char* freeDirectory =
    "Make the package directory writable and free space on its disk.";

// More special texts stand before those that would take them for their own. What the manual page
// explains and isn't here is shown, too.
static constexpr Line lineTable[] = {
    {heading, nullptr},
    {"Marvek Ethernet Firmware Update Tool, Version <version>", takeTitle},
    trouble("Error! Incorrect usage of command line parameters.", "usage-error", actRepeat,
            stopAtUsage, "Mend the command line."),
    {"No duplicate MACs found. Okay", nullptr},
    {"***** REBOOT REQUIRED *****", nullptr},
    trouble(
        "Duplicated MAC Addresses have been detected and corrected. Please reboot and run the update package again to continue with the flash update.",
        "macs-corrected", actReboot | actRepeat | actFine, stopForReboot),
    trouble("Error! Cannot create temporary file \"<q or y>\".", "no-temporary-file", actRepeat,
            missTemporaryFile, freeDirectory),
    trouble("Error! Unable to locate Kelvane <family> tool (<path>).", "no-utility", actRepeat,
            note, "Change into the package directory; complete the package."),
    trouble("Error! Unable to build <family> device list.", "no-device-list", actRepeat,
            missDeviceList, "Free memory."),
    trouble("Error! Unable to create resources for device <MAC>.", "no-device-resources", actRepeat,
            notePort, "Free memory."),
    trouble("Error! Cannot create temporary file for <family> devices.", "no-listing-file",
            actRepeat, note, freeDirectory),
    trouble("Warning. No Kelvane <family> adapters found.", "no-adapters", actRepeat, note,
            "Run ./lnxfwvt2 by hand, answer q, and see what it lists or why it fails."),
    trouble("Error 9: Cannot access <MAC> information file.", "no-directory", actForce,
            missDirectory, freeDirectory),
    trouble("Error! Unable to create resources for ptr_phy_list.", "no-nic-resources", actNothing,
            note, "Free memory."),
    trouble(
        "Error! Failed to retrieve device driver information. Update cannot continue. See <log> for more information.",
        "no-driver-information", actRepeat, stop, "Check the management library."),
    {"ADAPTER MAC    \t<headings>\t\tBUS:DEVICE:FUNC", startTable},
    {"-------------------\t<rules>\t\t---", goOnWithTable},
    {"Updating Kelvane <family> adapters.", beginPass},
    {"The device driver version for <MAC> is <version>.", beginVisit},
    {"Checking VPD-V0 data for device <MAC> did: <number> ssid: <number>", beginStampCheck},
    trouble("!!! Error performing VPDV0 check on device <MAC> !!!", "stamp-check-failed", actRepeat,
            failStampCheck, "See why the utility can't read the stamp.", Awaited::stampCheck),
    {"*** Successfully completed performing V0 check on device <MAC> ***", nullptr,
     Awaited::stampCheck},
    {"Writing Build Version <version> to vpd-v0 for device <MAC>", beginStamp},
    trouble("!!! Error performing vpd-v0 update on device <MAC> !!!", "stamp-failed", actRepeat,
            endStamp, "Check that BuildVersion.txt is not empty.", Awaited::stamp),
    {"*** Successfully completed vpd-v0 update on device <MAC> ***", endStamp, Awaited::stamp},
    {"Directory information for <MAC>", beginDirectory},
    trouble("!!! Error updating firmware on <MAC>, adapter is down !!!", "adapter-down",
            actDriver | actForce, leaveOutPort<&Visit::down, fwup::exitAdapterDown>),
    trouble(
        "!!! Error updating firmware on <MAC> because the installed firmware is corrupted. Contact Marvek support. !!!",
        "firmware-corrupted", actSupport, leaveOutPort<&Visit::corrupted, fwup::exitErrors>),
    {"Comparing \"<stamp>\" (on card) with \"<version>\" (current build) need_to_force_update=<number>",
     compareStamp},
    {"Updating <MAC> using file <image>", beginFlash},
    trouble(
        "!!! Error updating <component> firmware on device <MAC> using file <image>. File not found !!!",
        "image-missing", actForce, missImage, "Complete the package: an image is missing."),
    trouble("!!! Error updating <component> firmware on device <MAC> using file <image> !!!",
            "flash-failed", actForce, endFlash<FlashOutcome::failed>, nullptr, Awaited::flash),
    {"*** Update successful ***", endFlash<FlashOutcome::updated>, Awaited::flash},
    {"*** No update needed ***", endFlash<FlashOutcome::notNeeded>, Awaited::flash},
    {"*** No update needed because need_to_force_update=0 ***", endFlash<FlashOutcome::refused>,
     Awaited::flash},
    {"*** Update successful, reboot needed ***", endFlash<FlashOutcome::rebootNeeded>,
     Awaited::flash},
    {"*** iscsi <cfg or cfg2> removed successfully ***", endRemoval<true>, Awaited::blockRemoval},
    trouble("*** iscsi <cfg or cfg2> removal failed ***", "block-not-removed", actRepeat,
            endRemoval<false>, nullptr, Awaited::blockRemoval),
    {"*** YB data is correct on <MAC> ***", endYb<YbOutcome::right>},
    {"*** Successfully completed performing YB fix on device <MAC> ***", endYb<YbOutcome::repaired>,
     Awaited::ybFix},
    trouble("!!! Error performing YB fix on device <MAC> !!!", "yb-failed", actRepeat,
            endYb<YbOutcome::failed>, nullptr, Awaited::ybFix),
    {"Now starting a CRC check for each Kelvane Ethernet adapter.", nullptr},
    {"Performing CRC check for device <MAC>", nullptr},
    trouble("!!! Error performing CRC check on device <MAC>, adapter is down !!!", "crc-down",
            actDriver, endCrc<CrcOutcome::down>),
    trouble("!!! Error performing CRC check on device <MAC> !!!", "crc-failed",
            actStayUp | actForce, endCrc<CrcOutcome::failed>, nullptr, Awaited::crc),
    {"*** Successfully completed CRC check on device <MAC> ***", endCrc<CrcOutcome::passed>,
     Awaited::crc},
    {"CRC check complete.", nullptr},
    {"ISB_CFG<block> version for <MAC> is <version>", takeIscsiVersion},
    {"<Enabl or Disabl>ing management firmware (<component>) for <MAC>", beginSwitch},
    {"*** Successfully <enabl or disabl>ed management firmware (<component>) on device <MAC> (reboot required) ***",
     endSwitch<SwitchOutcome::rebootNeeded>, Awaited::switching},
    {"*** Successfully <enabl or disabl>ed management firmware (<component>) on device <MAC> ***",
     endSwitch<SwitchOutcome::done>, Awaited::switching},
    trouble("!!! Error disabling management firmware (<component>) on device <MAC> !!!",
            "switch-failed", actRepeat, failSwitchOfAll, nullptr, Awaited::switching),
    trouble("!!! Error <Enabl or Disabl>ing management firmware (NSCI) on device <MAC> !!!",
            "switch-failed", actRepeat, endSwitch<SwitchOutcome::failed>, nullptr,
            Awaited::switching),
    trouble("Skipping command: \"<command>\"", "held-back", actForce | actFine, holdBack,
            "Remove /tmp/kvsupdbg-no-f-update.txt."),
    {"One or more errors occurred during the firmware update process. See <log> for more information.",
     endWithErrors},
    {"Update complete. The firmware update log has been saved in <log>.", endClean},
};
const Line* const lines = lineTable;
const size_t lineCount = sizeof lineTable / sizeof lineTable[0];

struct Known {
    Line line;
    Pattern pattern;
};

static std::vector<Known> allLines() {
    std::vector<Known> known;
    for (const Line& line : lineTable) {
        known.push_back({line, takeApart(line.text)});
    }
    for (const PageAdvice& told : pageAdvice) {
        const auto hasText = [&told](const Line& line) {
            return std::string_view(line.text) == told.text;
        };
        if (std::none_of(std::begin(lineTable), std::end(lineTable), hasText)) {
            known.push_back({trouble(told.text, "other", actRepeat, note), takeApart(told.text)});
        }
    }
    return known;
}

ToolLine readToolLine(std::string_view line) {
    static const std::vector<Known> table = allLines();
    const std::string_view text = trimmed(line);
    ToolLine found;
    for (const Known& known : table) {
        if (match(known.pattern, text, found.fields)) {
            found.line = known.line;
            found.text = text;
            return found;
        }
    }
    return {};
}

bool isOfDirectory(const ToolLine& line) {
    return line.line.effect == beginDirectory || line.line.effect == missDirectory;
}

// A step that succeeded has ended with one of its good codes. Some are judged by what the
// shell told, which for a killed utility isn't in the code.
static bool agrees(Awaited step, bool failed, int code) {
    const bool good = code == fwup::codeSuccess;
    const bool goodAfterReboot = good || code == fwup::codeRebootRequired;
    switch (step) {
        case Awaited::nothing:
        case Awaited::flash:  // judged by itself
            return true;
        case Awaited::stampCheck:
        case Awaited::stamp:
        case Awaited::crc: return failed || good;
        case Awaited::ybFix: return failed || goodAfterReboot;
        case Awaited::blockRemoval:
        case Awaited::switching: return failed != goodAfterReboot;
    }
    return false;
}

void obey(LogReader& reader, std::string_view line) {
    const ToolLine found = readToolLine(line);
    const Awaited step = found.line.outcomeOf;
    if (step != Awaited::nothing && step != reader.awaited) {
        doubt(reader, line);
        return;
    }
    if (step != Awaited::nothing) {
        reader.awaited = Awaited::nothing;
        if (!agrees(step, found.line.advice.kind != nullptr, reader.code)) {
            doubt(reader, line);
            return;
        }
    }
    if (found.line.effect != nullptr) {
        found.line.effect(reader, found);
    }
}

}  // namespace report
