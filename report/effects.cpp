#include "effects.h"

#include <string>
#include <utility>

#include "commands.h"

namespace report {

// --- Trouble, and the run as a whole

static void note(LogReader& reader, const ToolLine& line) {
    addFinding(reader, line.kind, line.text);
}

static void notePort(LogReader& reader, const ToolLine& line) {
    addFinding(reader, line.kind, line.text, line.fields[0]);
}

static void endWithError(LogReader& reader, const ToolLine& line) {
    note(reader, line);
    reader.at.exitStatus = 1;
}

static void missTemporaryFile(LogReader& reader, const ToolLine& line) {
    note(reader, line);
    if (line.fields[0] == "q") {
        reader.at.exitStatus = 1;
    }
}

// Within the pass it is the list for a CRC check, without which the pass ends.
static void missDeviceList(LogReader& reader, const ToolLine& line) {
    note(reader, line);
    if (reader.at.operation == Operation::update && !reader.at.passOver) {
        reader.at.passStatus = 1;
    }
}

static void takeTitle(LogReader& reader, const ToolLine& line) {
    if (!reader.at.titleSeen) {
        reader.run.version = std::string(line.fields[0]);
    }
    reader.at.titleSeen = true;
}

static void endWithErrors(LogReader& reader, const ToolLine& /*line*/) {
    const bool isUpdate = reader.at.operation == Operation::update;
    const int status = reader.at.passStatus == 0 ? 1 : reader.at.passStatus;
    reader.at.exitStatus = isUpdate ? status : 171;
}

static void endClean(LogReader& reader, const ToolLine& /*line*/) {
    reader.at.exitStatus = 0;
}

static void startTable(LogReader& reader, const ToolLine& /*line*/) {
    Position& at = reader.at;
    at.inTable = true;
    at.tableIsSecond = at.operation == Operation::update;
    reader.run.hasAfter = reader.run.hasAfter || at.tableIsSecond;
    if (at.operation == Operation::none) {
        at.operation = Operation::versions;
    }
}

static void beginPass(LogReader& reader, const ToolLine& /*line*/) {
    reader.at.operation = Operation::update;
    reader.at.listed = true;
}

static void takeIscsiVersion(LogReader& reader, const ToolLine& /*line*/) {
    reader.at.operation = Operation::iscsiVersions;
}

static void beginDirectory(LogReader& reader, const ToolLine& line) {
    Position& at = reader.at;
    if (!isKnown(reader, line.fields[0])) {
        return;
    }
    at.directoryOf = std::string(line.fields[0]);
    if (at.awaited == Awaited::nothing && at.operation == Operation::none) {
        at.operation = Operation::directory;
    }
    const char* step = at.awaited == Awaited::stamp ? "stamp "
                       : at.awaited == Awaited::crc ? "crc "
                                                    : "directory ";
    reader.run.directories.push_back({at.directoryOf, {}});
    beginQuote(reader, Quote::directory, step + at.directoryOf);
}

// --- One port's turn

static void beginVisit(LogReader& reader, const ToolLine& line) {
    Visit visit;
    visit.mac = std::string(line.fields[0]);
    visit.driver = std::string(line.fields[1]);
    visit.line = reader.number;
    reader.run.visits.push_back(std::move(visit));
    reader.at.stampForces = -1;
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
    reader.at.passStatus = 1;
}

static void beginStamp(LogReader& reader, const ToolLine& line) {
    if (Visit* visit = visitOf(reader, line.fields[1])) {
        visit->build = std::string(line.fields[0]);
    }
}

static void leaveOutPort(LogReader& reader, const ToolLine& line) {
    Visit* visit = visitOf(reader, line.fields[0]);
    if (visit == nullptr) {
        return;
    }
    (line.kind == LineKind::adapterDown ? visit->down : visit->corrupted) = true;
    reader.at.passStatus = line.kind == LineKind::adapterDown ? 172 : 1;
    addFinding(reader, line.kind, line.text, line.fields[0]);
}

static void compareStamp(LogReader& reader, const ToolLine& line) {
    int forces = 0;
    if (reader.run.visits.empty() || !readNumber(line.fields[2], forces)) {
        return;
    }
    Visit& visit = reader.run.visits.back();
    reader.at.stampForces = forces;
    if (!visit.onCard) {
        visit.onCard = std::string(line.fields[0]);
    }
    if (line.fields[1].empty() && visit.build && !visit.build->empty()) {
        addFinding(reader, LineKind::buildVersionLost, line.text, visit.mac);
    }
}

// --- Flashes

// The name that an image's flash goes by: "3C01mbaf.bin" is of "mba".
static std::string componentOfImage(std::string_view image) {
    constexpr size_t idLength = 4;
    constexpr std::string_view suffix = ".bin";
    if (image.size() <= idLength + suffix.size() || !endsWith(image, suffix)) {
        return {};
    }
    image = image.substr(idLength, image.size() - idLength - suffix.size());
    return image == "mbaf" ? "mba" : std::string(image);
}

static void beginFlash(LogReader& reader, const ToolLine& line) {
    if (visitOf(reader, line.fields[0]) == nullptr) {
        return;
    }
    Flash flash;
    flash.mac = std::string(line.fields[0]);
    flash.image = std::string(line.fields[1]);
    flash.component = componentOfImage(line.fields[1]);
    flash.stampForces = reader.at.stampForces;
    flash.line = reader.number;
    reader.run.flashes.push_back(std::move(flash));
    reader.at.stampForces = -1;
}

static void failBlockRemoval(LogReader& reader, const ToolLine& line) {
    if (reader.at.awaited == Awaited::blockRemoval) {
        const std::vector<Visit>& visits = reader.run.visits;
        addFinding(reader, line.kind, line.text, visits.empty() ? "" : visits.back().mac);
    }
}

static void holdBack(LogReader& reader, const ToolLine& line) {
    if (reader.at.isOpen && line.fields[0] == reader.at.open) {
        skipCommand(reader, line.text);
    }
}

// --- Outcomes: believed where they are awaited

static void failFlash(LogReader& reader, const ToolLine& line) {
    Flash* flash = lastFlash(reader);
    if (flash == nullptr || flash->mac != line.fields[1] || flash->image != line.fields[2]) {
        return;
    }
    if (line.kind == LineKind::imageMissing && flash->outcome == FlashOutcome::cutOff) {
        flash->outcome = FlashOutcome::imageMissing;
    } else if (line.kind == LineKind::imageMissing || reader.at.awaited != Awaited::flash) {
        return;
    }
    if (line.kind == LineKind::flashFailed) {
        flash->outcome = FlashOutcome::failed;
    }
    addFinding(reader, line.kind, line.text, line.fields[1], line.fields[0]);
    reader.at.passStatus = 1;
}

// An outcome that comes once more closes its quote once more.
static void reopenOutcome(LogReader& reader, const ToolLine& line) {
    const bool ofStamp = line.kind == LineKind::stampDone || line.kind == LineKind::stampFailed;
    const bool ofCrc = line.kind == LineKind::crcPassed || line.kind == LineKind::crcFailed;
    if ((ofStamp && reader.at.awaited != Awaited::stamp) ||
        (ofCrc && reader.at.awaited != Awaited::crc)) {
        reopen(reader, (ofStamp ? "stamp " : "crc ") + std::string(line.fields[0]));
        reader.at.quote = Quote::none;
    }
}

static void endStamp(LogReader& reader, const ToolLine& line) {
    reopenOutcome(reader, line);
    Visit* visit = visitOf(reader, line.fields[0]);
    if (visit == nullptr || reader.at.awaited != Awaited::stamp) {
        return;
    }
    visit->stamped = line.kind == LineKind::stampDone;
    if (!visit->stamped) {
        addFinding(reader, line.kind, line.text, line.fields[0]);
    }
    reader.at.awaited = Awaited::nothing;
}

static void endCrc(LogReader& reader, const ToolLine& line) {
    reopenOutcome(reader, line);
    Visit* visit = visitOf(reader, line.fields[0]);
    if (visit == nullptr || (line.kind != LineKind::crcDown && reader.at.awaited != Awaited::crc)) {
        return;
    }
    visit->crc = line.kind == LineKind::crcPassed   ? CrcOutcome::passed
                 : line.kind == LineKind::crcFailed ? CrcOutcome::failed
                                                    : CrcOutcome::down;
    if (visit->crc != CrcOutcome::passed) {
        addFinding(reader, line.kind, line.text, line.fields[0]);
    }
    reader.at.awaited = Awaited::nothing;
}

static void endYb(LogReader& reader, const ToolLine& line) {
    Visit* visit = visitOf(reader, line.fields[0]);
    if (visit == nullptr || visit->stampRead) {
        return;
    }
    if (line.kind == LineKind::ybRight) {
        visit->yb = YbOutcome::right;
    } else if (reader.at.awaited == Awaited::ybFix) {
        visit->yb = line.kind == LineKind::ybRepaired ? YbOutcome::repaired : YbOutcome::failed;
        reader.at.awaited = Awaited::nothing;
        if (visit->yb == YbOutcome::failed) {
            addFinding(reader, line.kind, line.text, line.fields[0]);
        }
    }
}

// --- Management firmware

// The lines of the two maintenance modes differ in the case of one letter; until
// an outcome shows it, a run of NCSI alone may be either.
static void beginSwitch(LogReader& reader, const ToolLine& line) {
    Operation& operation = reader.at.operation;
    reader.run.switches.push_back({std::string(line.fields[2]), std::string(line.fields[1]),
                                   SwitchOutcome::cutOff, reader.number});
    if (line.fields[0] == "Enabl") {
        operation = Operation::enableNcsi;
    } else if (line.fields[1] != "NCSI") {
        operation = Operation::disableManagement;
    } else if (operation == Operation::none) {
        operation = Operation::disableNcsi;
    }
}

static void endSwitch(LogReader& reader, const ToolLine& line) {
    if (reader.run.switches.empty() || reader.at.awaited != Awaited::switching) {
        return;
    }
    Switch& current = reader.run.switches.back();
    const bool ofAll = line.kind == LineKind::switchFailed || line.fields[0] == "disabl";
    if (ofAll) {
        reader.at.operation = Operation::disableManagement;
    }
    if (line.kind == LineKind::switchDone) {
        current.outcome = SwitchOutcome::done;
    } else if (line.kind == LineKind::switchReboot) {
        current.outcome = SwitchOutcome::rebootNeeded;
    } else {
        current.outcome = SwitchOutcome::failed;
        addFinding(reader, line.kind, line.text, current.mac, current.firmware);
    }
    reader.at.awaited = Awaited::nothing;
}

// --- The table

struct Effect {
    LineKind kind;
    void (*apply)(LogReader&, const ToolLine&);
};

// The kinds that aren't here change nothing.
static const Effect effects[] = {
    {LineKind::title, takeTitle},
    {LineKind::usageError, endWithError},
    {LineKind::macsCorrected, endWithError},
    {LineKind::noTemporaryFile, missTemporaryFile},
    {LineKind::noTool, note},
    {LineKind::noDeviceList, missDeviceList},
    {LineKind::noDeviceResources, notePort},
    {LineKind::noListingFile, note},
    {LineKind::noAdapters, note},
    {LineKind::noInventory, notePort},
    {LineKind::noNicResources, note},
    {LineKind::noDriverInformation, endWithError},
    {LineKind::tableHead, startTable},
    {LineKind::passBegins, beginPass},
    {LineKind::driverVersion, beginVisit},
    {LineKind::stampCheck, beginStampCheck},
    {LineKind::stampCheckFailed, failStampCheck},
    {LineKind::stampWriting, beginStamp},
    {LineKind::stampDone, endStamp},
    {LineKind::stampFailed, endStamp},
    {LineKind::directory, beginDirectory},
    {LineKind::adapterDown, leaveOutPort},
    {LineKind::corrupted, leaveOutPort},
    {LineKind::comparing, compareStamp},
    {LineKind::flashBegins, beginFlash},
    {LineKind::imageMissing, failFlash},
    {LineKind::flashFailed, failFlash},
    {LineKind::blockNotRemoved, failBlockRemoval},
    {LineKind::ybRight, endYb},
    {LineKind::ybRepaired, endYb},
    {LineKind::ybFailed, endYb},
    {LineKind::crcDown, endCrc},
    {LineKind::crcPassed, endCrc},
    {LineKind::crcFailed, endCrc},
    {LineKind::iscsiVersion, takeIscsiVersion},
    {LineKind::switchBegins, beginSwitch},
    {LineKind::switchDone, endSwitch},
    {LineKind::switchReboot, endSwitch},
    {LineKind::switchFailed, endSwitch},
    {LineKind::switchFailedNcsi, endSwitch},
    {LineKind::skipped, holdBack},
    {LineKind::errorsOccurred, endWithErrors},
    {LineKind::updateComplete, endClean},
};

void obey(LogReader& reader, const ToolLine& line) {
    for (const Effect& effect : effects) {
        if (effect.kind == line.kind) {
            effect.apply(reader, line);
            return;
        }
    }
}

}  // namespace report
