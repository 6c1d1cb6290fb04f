#include "log_reader.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace report {

// A closing line that comes again after so many later quotes is not looked for.
constexpr size_t checkpointLimit = 1024;

// Longer commands than the tool can write are none of its own.
constexpr size_t commandLimit = 1024;

constexpr std::string_view aboutTo = "About to execute: \"";
constexpr std::string_view command = "Command \"";
constexpr std::string_view returned = "\" returned code: ";
constexpr std::string_view listCommand = "./lnxfwvt2 <q >devices";
constexpr std::string_view removeList = "rm devices";
constexpr std::string_view listingKey = "listing";

// --- Going back

static Checkpoint remember(const LogReader& reader, std::string key) {
    const Run& run = reader.run;
    Checkpoint checkpoint;
    checkpoint.key = std::move(key);
    checkpoint.position = reader.at;
    checkpoint.macs = run.macs.size();
    checkpoint.before = run.before.size();
    checkpoint.after = run.after.size();
    checkpoint.visits = run.visits.size();
    checkpoint.flashes = run.flashes.size();
    checkpoint.switches = run.switches.size();
    checkpoint.findings = run.findings.size();
    checkpoint.hasAfter = run.hasAfter;
    if (!run.visits.empty()) {
        checkpoint.visit = run.visits.back();
    }
    if (!run.flashes.empty()) {
        checkpoint.flash = run.flashes.back();
    }
    if (!run.switches.empty()) {
        checkpoint.lastSwitch = run.switches.back();
    }
    return checkpoint;
}

static void beginQuote(LogReader& reader, Quote quote, std::string key) {
    reader.at.quote = quote;
    reader.at.quotedText = false;
    reader.checkpoints.push_back(remember(reader, std::move(key)));
    if (reader.checkpoints.size() > checkpointLimit) {
        reader.checkpoints.pop_front();
    }
}

template <typename Record>
static void cutBack(std::vector<Record>& records, size_t count, const std::optional<Record>& last) {
    records.erase(records.begin() + static_cast<std::ptrdiff_t>(count), records.end());
    if (last) {
        records.back() = *last;
    }
}

static void goBack(LogReader& reader, size_t index) {
    const Checkpoint& to = reader.checkpoints[index];
    Run& run = reader.run;
    reader.at = to.position;
    run.macs.resize(to.macs);
    run.before.resize(to.before);
    run.after.resize(to.after);
    run.hasAfter = to.hasAfter;
    run.findings.resize(to.findings);
    cutBack(run.visits, to.visits, to.visit);
    cutBack(run.flashes, to.flashes, to.flash);
    cutBack(run.switches, to.switches, to.lastSwitch);
    reader.checkpoints.resize(index + 1);
}

// The place of the latest quote with this key; the number of all when none has it.
static size_t findCheckpoint(const LogReader& reader, std::string_view key) {
    for (size_t i = reader.checkpoints.size(); i > 0; i--) {
        if (reader.checkpoints[i - 1].key == key) {
            return i - 1;
        }
    }
    return reader.checkpoints.size();
}

// Opens the latest quote with this key again; false when there is none.
static bool reopen(LogReader& reader, std::string_view key) {
    const size_t index = findCheckpoint(reader, key);
    if (index == reader.checkpoints.size()) {
        return false;
    }
    goBack(reader, index);
    return true;
}

// --- Records

static std::string text(std::string_view view) {
    return std::string(view);
}

static void addFinding(LogReader& reader, LineKind kind, std::string_view line,
                       std::string_view mac = {}, std::string_view component = {}) {
    reader.run.findings.push_back(
        {kind, reader.number, text(trimmed(line)), text(mac), text(component), reader.at.passOver});
}

static bool isKnown(const LogReader& reader, std::string_view mac) {
    const std::vector<std::string>& macs = reader.run.macs;
    return std::find(macs.begin(), macs.end(), mac) != macs.end();
}

// The visit that is going on, if it is this port's.
static Visit* visitOf(LogReader& reader, std::string_view mac) {
    std::vector<Visit>& visits = reader.run.visits;
    return !visits.empty() && visits.back().mac == mac ? &visits.back() : nullptr;
}

static Flash* lastFlash(LogReader& reader) {
    return reader.run.flashes.empty() ? nullptr : &reader.run.flashes.back();
}

// The name that an image's flash goes by: "3C01mbaf.bin" is of "mba".
static std::string componentOfImage(std::string_view image) {
    constexpr size_t idLength = 4;
    constexpr std::string_view suffix = ".bin";
    if (image.size() <= idLength + suffix.size() || !endsWith(image, suffix)) {
        return {};
    }
    image = image.substr(idLength, image.size() - idLength - suffix.size());
    return image == "mbaf" ? "mba" : text(image);
}

// --- Commands

// The word of a command line behind its first `count` words.
static std::string_view wordOf(std::string_view line, size_t count) {
    for (;;) {
        const size_t end = line.find(' ');
        if (count == 0) {
            return line.substr(0, end);
        }
        if (end == std::string_view::npos) {
            return {};
        }
        line.remove_prefix(end + 1);
        count--;
    }
}

// Whether a command's output is added to the log, whose name the log itself
// doesn't tell otherwise.
static bool isLogged(std::string_view line) {
    const size_t at = line.rfind(" >>");
    if (at == std::string_view::npos) {
        return false;
    }
    const std::string_view target = line.substr(at + 3);
    return target.substr(target.rfind('/') + 1).rfind("kvlnfwup", 0) == 0;
}

static bool isFlash(std::string_view line) {
    return wordOf(line, 2) == "upgrade";
}

static FlashOutcome outcomeOf(int code, int stampForces) {
    switch (code) {
        case 0:
            return FlashOutcome::updated;
        case 35:
            return FlashOutcome::notNeeded;
        case 70:
            return stampForces == 1 ? FlashOutcome::failed : FlashOutcome::notNeeded;
        case 95:
            return FlashOutcome::rebootNeeded;
        default:
            return FlashOutcome::failed;
    }
}

static void openCommand(LogReader& reader, std::string_view line) {
    Position& at = reader.at;
    at.open = text(line.substr(0, commandLimit));
    at.isOpen = true;
    at.inTable = false;
    at.awaited = Awaited::nothing;
    const std::string_view verb = wordOf(line, 2);
    if (verb == "dir" && endsWith(line, " >" + text(wordOf(line, 1))) && !at.listed) {
        reader.run.macs.push_back(text(wordOf(line, 1)));
    }
    if (isFlash(line) && lastFlash(reader) != nullptr) {
        lastFlash(reader)->forced = line.find(" -F -") != std::string_view::npos;
    }
    if (at.operation == Operation::update && wordOf(line, 0) == "rm" &&
        isKnown(reader, wordOf(line, 1))) {
        at.passOver = true;
    }
    if (isLogged(line)) {
        beginQuote(reader, Quote::output, at.open);
    }
}

static void closeFlash(LogReader& reader, int code) {
    Flash* flash = lastFlash(reader);
    if (flash == nullptr) {
        return;
    }
    flash->exitCode = code;
    flash->outcome = outcomeOf(code, flash->stampForces);
    flash->notAccepted = code == 70 && flash->outcome == FlashOutcome::notNeeded;
    reader.at.awaited = Awaited::flash;
}

// What the tool does with the result of a command decides what may come next.
static void judgeReturn(LogReader& reader, std::string_view line, int code) {
    Position& at = reader.at;
    const std::string_view verb = wordOf(line, 2);
    const std::string_view subject = wordOf(line, 3);
    if (isFlash(line)) {
        closeFlash(reader, code);
    } else if (line == listCommand) {
        beginQuote(reader, Quote::listing, text(listingKey));
    } else if (line == "rm q") {
        at.removedQuitFile = true;
    } else if (verb == "crc") {
        at.awaited = Awaited::crc;
    } else if (verb == "dir" && subject == "-delete") {
        at.awaited = Awaited::blockRemoval;
    } else if (verb == "cfg" && subject == "-show") {
        at.quote = wordOf(line, 4) == "vpdyb" ? Quote::yb : Quote::none;
    } else if (verb == "cfg" && subject == "-vpdyb") {
        at.awaited = Awaited::ybFix;
    } else if (verb == "cfg" && subject == "-noreset") {
        at.awaited = Awaited::stamp;
    } else if (verb == "cfg") {
        at.awaited = Awaited::switching;
    }
}

static void closeCommand(LogReader& reader, std::string_view line, int code) {
    // A copy: going back changes what it may point into.
    const std::string closed(line);
    if (!reader.at.isOpen || reader.at.open != closed) {
        if (!reopen(reader, closed)) {
            return;
        }
    }
    const size_t index = findCheckpoint(reader, closed);
    if (index != reader.checkpoints.size()) {
        reader.checkpoints[index].code = code;
    }
    reader.at.quote = Quote::none;
    reader.at.isOpen = false;
    judgeReturn(reader, closed, code);
}

// Held back: the tool takes it for a success.
static void skipCommand(LogReader& reader, std::string_view line) {
    Flash* flash = lastFlash(reader);
    reader.at.quote = Quote::none;
    reader.at.isOpen = false;
    if (!isFlash(reader.at.open) || flash == nullptr) {
        addFinding(reader, LineKind::skipped, line);
        judgeReturn(reader, reader.at.open, 0);
        return;
    }
    flash->outcome = FlashOutcome::heldBack;
    addFinding(reader, LineKind::skipped, line, flash->mac, flash->component);
}

// --- Lines about the run as a whole

static void endRun(LogReader& reader, int exitStatus) {
    reader.at.exitStatus = exitStatus;
}

static void summarize(LogReader& reader) {
    if (reader.at.operation == Operation::update) {
        endRun(reader, reader.at.passStatus == 0 ? 1 : reader.at.passStatus);
    } else {
        endRun(reader, 171);
    }
}

static void startTable(LogReader& reader) {
    Position& at = reader.at;
    at.inTable = true;
    at.tableIsSecond = at.operation == Operation::update;
    reader.run.hasAfter = reader.run.hasAfter || at.tableIsSecond;
    if (at.operation == Operation::none) {
        at.operation = Operation::versions;
    }
}

static void addRow(LogReader& reader, const TableRow& row) {
    Port port;
    port.mac = text(row.mac);
    port.label = text(row.label);
    port.bus = row.bus;
    port.device = row.device;
    port.function = row.function;
    for (size_t i = 0; i < versionColumns; i++) {
        port.versions[i] = text(row.versions[i]);
    }
    (reader.at.tableIsSecond ? reader.run.after : reader.run.before).push_back(std::move(port));
}

static void beginVisit(LogReader& reader, std::string_view mac, std::string_view driver) {
    Visit visit;
    visit.mac = text(mac);
    visit.driver = text(driver);
    visit.line = reader.number;
    reader.run.visits.push_back(std::move(visit));
    reader.at.stampForces = -1;
}

static void beginFlash(LogReader& reader, std::string_view mac, std::string_view image) {
    Flash flash;
    flash.mac = text(mac);
    flash.image = text(image);
    flash.component = componentOfImage(image);
    flash.stampForces = reader.at.stampForces;
    flash.line = reader.number;
    reader.run.flashes.push_back(std::move(flash));
    reader.at.stampForces = -1;
}

static void compareStamp(LogReader& reader, const ToolLine& line, std::string_view whole) {
    int forces = 0;
    if (reader.run.visits.empty() || !readNumber(line.fields[2], forces)) {
        return;
    }
    Visit& visit = reader.run.visits.back();
    reader.at.stampForces = forces;
    if (!visit.onCard) {
        visit.onCard = text(line.fields[0]);
    }
    if (line.fields[1].empty() && visit.build && !visit.build->empty()) {
        addFinding(reader, LineKind::buildVersionLost, whole, visit.mac);
    }
}

// --- Outcomes: believed where they are awaited

static void failFlash(LogReader& reader, const ToolLine& line, std::string_view whole) {
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
    addFinding(reader, line.kind, whole, line.fields[1], line.fields[0]);
    reader.at.passStatus = 1;
}

static void endStamp(LogReader& reader, const ToolLine& line, std::string_view whole) {
    Visit* visit = visitOf(reader, line.fields[0]);
    if (visit == nullptr || reader.at.awaited != Awaited::stamp) {
        return;
    }
    visit->stamped = line.kind == LineKind::stampDone;
    if (!visit->stamped) {
        addFinding(reader, line.kind, whole, line.fields[0]);
    }
    reader.at.awaited = Awaited::nothing;
}

static void endCrc(LogReader& reader, const ToolLine& line, std::string_view whole) {
    Visit* visit = visitOf(reader, line.fields[0]);
    if (visit == nullptr || (line.kind != LineKind::crcDown && reader.at.awaited != Awaited::crc)) {
        return;
    }
    visit->crc = line.kind == LineKind::crcPassed   ? CrcOutcome::passed
                 : line.kind == LineKind::crcFailed ? CrcOutcome::failed
                                                    : CrcOutcome::down;
    if (visit->crc != CrcOutcome::passed) {
        addFinding(reader, line.kind, whole, line.fields[0]);
    }
    reader.at.awaited = Awaited::nothing;
}

static void endYb(LogReader& reader, const ToolLine& line, std::string_view whole) {
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
            addFinding(reader, line.kind, whole, line.fields[0]);
        }
    }
}

// The lines of the two maintenance modes differ in the case of one letter; until
// an outcome shows it, a run of NCSI alone may be either.
static void beginSwitch(LogReader& reader, const ToolLine& line) {
    Operation& operation = reader.at.operation;
    reader.run.switches.push_back(
        {text(line.fields[2]), text(line.fields[1]), SwitchOutcome::cutOff, reader.number});
    if (line.fields[0] == "Enabl") {
        operation = Operation::enableNcsi;
    } else if (line.fields[1] != "NCSI") {
        operation = Operation::disableManagement;
    } else if (operation == Operation::none) {
        operation = Operation::disableNcsi;
    }
}

static void endSwitch(LogReader& reader, const ToolLine& line, std::string_view whole) {
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
        addFinding(reader, line.kind, whole, current.mac, current.firmware);
    }
    reader.at.awaited = Awaited::nothing;
}

static void leaveOutPort(LogReader& reader, const ToolLine& line, std::string_view whole) {
    Visit* visit = visitOf(reader, line.fields[0]);
    if (visit == nullptr) {
        return;
    }
    (line.kind == LineKind::adapterDown ? visit->down : visit->corrupted) = true;
    reader.at.passStatus = line.kind == LineKind::adapterDown ? 172 : 1;
    addFinding(reader, line.kind, whole, line.fields[0]);
}

static void beginDirectory(LogReader& reader, std::string_view mac) {
    Position& at = reader.at;
    at.directoryOf = text(mac);
    if (at.awaited == Awaited::nothing && at.operation == Operation::none) {
        at.operation = Operation::directory;
    }
    const char* step = at.awaited == Awaited::stamp ? "stamp "
                       : at.awaited == Awaited::crc ? "crc "
                                                    : "directory ";
    beginQuote(reader, Quote::directory, step + at.directoryOf);
}

// --- Quotes

// A "returned code" line at the end of a line, behind whatever the utility left
// without a line feed.
struct Return {
    std::string_view line;
    std::string_view command;
    int code = 0;
};

static bool findReturn(std::string_view line, Return& found) {
    // Most lines end in something else than a digit, which is quickly seen.
    if (line.empty() || line.back() < '0' || line.back() > '9') {
        return false;
    }
    const size_t code = line.rfind(returned);
    if (code == std::string_view::npos ||
        !readNumber(line.substr(code + returned.size()), found.code)) {
        return false;
    }
    const size_t begin = line.substr(0, code).rfind(command);
    if (begin == std::string_view::npos) {
        return false;
    }
    found.line = line.substr(begin);
    found.command = line.substr(begin + command.size(), code - begin - command.size());
    return true;
}

static void doubtReturn(LogReader& reader, const Return& found) {
    const size_t index = findCheckpoint(reader, found.command);
    if (index == reader.checkpoints.size()) {
        return;
    }
    const Checkpoint& checkpoint = reader.checkpoints[index];
    if (!checkpoint.code || checkpoint.code == found.code) {
        return;
    }
    addFinding(reader, LineKind::doubtful, found.line);
    if (isFlash(found.command) && checkpoint.flashes > 0) {
        reader.run.flashes[checkpoint.flashes - 1].outcome = FlashOutcome::failed;
    }
}

// The end of a quoted line that is the tool's; empty when none of it is.
static std::string_view endOfOutput(LogReader& reader, std::string_view line) {
    Position& at = reader.at;
    const bool mayBeHeldBack = !at.quotedText && at.open.find("upgrade") != std::string::npos;
    if (mayBeHeldBack && line == "Skipping command: \"" + at.open + "\"") {
        return line;
    }
    at.quotedText = at.quotedText || !trimmed(line).empty();
    Return found;
    if (!findReturn(line, found)) {
        return {};
    }
    if (found.command == at.open) {
        return found.line;
    }
    doubtReturn(reader, found);
    return {};
}

static std::string_view endOfListing(std::string_view line) {
    const bool removal = startsWith(line, aboutTo) && endsWith(line, "\"");
    if (!removal) {
        return {};
    }
    const std::string_view next = line.substr(aboutTo.size(), line.size() - aboutTo.size() - 1);
    const bool again = startsWith(next, "./lnxfwvt2 <q >>") && isLogged(next);
    return next == removeList || again ? line : std::string_view();
}

// A directory's last line may lack its line feed.
static std::string_view endOfDirectory(const LogReader& reader, std::string_view line) {
    static constexpr LineKind outcomes[] = {LineKind::stampDone, LineKind::stampFailed,
                                            LineKind::crcPassed, LineKind::crcFailed};
    const Position& at = reader.at;
    if (at.awaited != Awaited::nothing) {
        for (const LineKind kind : outcomes) {
            const bool ofStamp = kind == LineKind::stampDone || kind == LineKind::stampFailed;
            const std::string_view pattern = textOf(kind);
            const size_t open = pattern.find('<');
            const std::string wanted = text(pattern.substr(0, open)) + at.directoryOf +
                                       text(pattern.substr(pattern.find('>') + 1));
            if (ofStamp == (at.awaited == Awaited::stamp) && endsWith(line, wanted)) {
                return line.substr(line.size() - wanted.size());
            }
        }
        return {};
    }
    if (startsWith(line, "About to execute: \"rm ") && endsWith(line, "\"")) {
        const std::string_view removed = line.substr(
            strlen("About to execute: \"rm "), line.size() - strlen("About to execute: \"rm ") - 1);
        return isKnown(reader, removed) ? line : std::string_view();
    }
    const ToolLine found = readToolLine(line);
    const bool next = found.kind == LineKind::directory || found.kind == LineKind::noInventory;
    return next && isKnown(reader, found.fields[0]) ? line : std::string_view();
}

// --- The tool's own lines

static bool readCommandLine(LogReader& reader, std::string_view line) {
    Position& at = reader.at;
    if (startsWith(line, aboutTo)) {
        line.remove_prefix(aboutTo.size());
        if (endsWith(line, "\"")) {
            const std::string_view opened = line.substr(0, line.size() - 1);
            if (opened == removeList && reopen(reader, listingKey)) {
                at.quote = Quote::none;
            }
            openCommand(reader, opened);
        } else {
            at.broken = text(line.substr(0, commandLimit)) + "\n";
            at.brokenReturn = false;
        }
        return true;
    }
    if (startsWith(line, command)) {
        line.remove_prefix(command.size());
        const size_t code = line.rfind(returned);
        int number = 0;
        if (code == std::string_view::npos) {
            at.broken = text(line.substr(0, commandLimit)) + "\n";
            at.brokenReturn = true;
        } else if (readNumber(line.substr(code + returned.size()), number)) {
            closeCommand(reader, line.substr(0, code), number);
        }
        return true;
    }
    return false;
}

// The second line of a command that holds a line feed.
static bool readBrokenCommand(LogReader& reader, std::string_view line) {
    Position& at = reader.at;
    if (at.broken.empty()) {
        return false;
    }
    const std::string whole = std::exchange(at.broken, {});
    int number = 0;
    if (!at.brokenReturn && line == "\"") {
        openCommand(reader, whole);
        return true;
    }
    if (at.brokenReturn && startsWith(line, returned) &&
        readNumber(line.substr(returned.size()), number)) {
        closeCommand(reader, whole, number);
        return true;
    }
    return false;
}

static bool readRow(LogReader& reader, std::string_view line) {
    TableRow row;
    if (!reader.at.inTable) {
        return false;
    }
    if (readTableRow(line, row)) {
        addRow(reader, row);
        return true;
    }
    reader.at.inTable = readToolLine(line).kind == LineKind::tableRule;
    return reader.at.inTable;
}

// An outcome that comes once more closes its quote once more.
static void reopenOutcome(LogReader& reader, const ToolLine& line) {
    const bool ofStamp = line.kind == LineKind::stampDone || line.kind == LineKind::stampFailed;
    const bool ofCrc = line.kind == LineKind::crcPassed || line.kind == LineKind::crcFailed;
    if ((ofStamp && reader.at.awaited != Awaited::stamp) ||
        (ofCrc && reader.at.awaited != Awaited::crc)) {
        reopen(reader, (ofStamp ? "stamp " : "crc ") + text(line.fields[0]));
        reader.at.quote = Quote::none;
    }
}

static void obey(LogReader& reader, const ToolLine& line, std::string_view whole) {
    Position& at = reader.at;
    switch (line.kind) {
        case LineKind::title:
            if (!at.titleSeen) {
                reader.run.version = text(line.fields[0]);
            }
            at.titleSeen = true;
            break;
        case LineKind::usageError:
        case LineKind::macsCorrected:
            addFinding(reader, line.kind, whole);
            endRun(reader, 1);
            break;
        case LineKind::noTemporaryFile:
            addFinding(reader, line.kind, whole);
            if (line.fields[0] == "q") {
                endRun(reader, 1);
            }
            break;
        case LineKind::noDeviceList:
            addFinding(reader, line.kind, whole);
            at.passStatus = at.operation == Operation::update && !at.passOver ? 1 : at.passStatus;
            break;
        case LineKind::noTool:
        case LineKind::noListingFile:
        case LineKind::noAdapters:
        case LineKind::noNicResources:
            addFinding(reader, line.kind, whole);
            break;
        case LineKind::noDeviceResources:
        case LineKind::noInventory:
            addFinding(reader, line.kind, whole, line.fields[0]);
            break;
        case LineKind::noDriverInformation:
            addFinding(reader, line.kind, whole);
            endRun(reader, 1);
            break;
        case LineKind::tableHead:
            startTable(reader);
            break;
        case LineKind::passBegins:
            at.operation = Operation::update;
            at.listed = true;
            break;
        case LineKind::driverVersion:
            beginVisit(reader, line.fields[0], line.fields[1]);
            break;
        case LineKind::stampCheck:
            if (Visit* visit = visitOf(reader, line.fields[0])) {
                visit->stampRead = true;
            }
            break;
        case LineKind::stampCheckFailed:
            addFinding(reader, line.kind, whole, line.fields[0]);
            at.passStatus = 1;
            break;
        case LineKind::stampWriting:
            if (Visit* visit = visitOf(reader, line.fields[1])) {
                visit->build = text(line.fields[0]);
            }
            break;
        case LineKind::stampDone:
        case LineKind::stampFailed:
            reopenOutcome(reader, line);
            endStamp(reader, line, whole);
            break;
        case LineKind::directory:
            if (isKnown(reader, line.fields[0])) {
                beginDirectory(reader, line.fields[0]);
            }
            break;
        case LineKind::adapterDown:
        case LineKind::corrupted:
            leaveOutPort(reader, line, whole);
            break;
        case LineKind::comparing:
            compareStamp(reader, line, whole);
            break;
        case LineKind::flashBegins:
            if (visitOf(reader, line.fields[0]) != nullptr) {
                beginFlash(reader, line.fields[0], line.fields[1]);
            }
            break;
        case LineKind::imageMissing:
        case LineKind::flashFailed:
            failFlash(reader, line, whole);
            break;
        case LineKind::blockNotRemoved:
            if (at.awaited == Awaited::blockRemoval) {
                addFinding(reader, line.kind, whole,
                           reader.run.visits.empty() ? "" : reader.run.visits.back().mac);
            }
            break;
        case LineKind::ybRight:
        case LineKind::ybRepaired:
        case LineKind::ybFailed:
            endYb(reader, line, whole);
            break;
        case LineKind::crcDown:
        case LineKind::crcPassed:
        case LineKind::crcFailed:
            reopenOutcome(reader, line);
            endCrc(reader, line, whole);
            break;
        case LineKind::iscsiVersion:
            at.operation = Operation::iscsiVersions;
            break;
        case LineKind::switchBegins:
            beginSwitch(reader, line);
            break;
        case LineKind::switchDone:
        case LineKind::switchReboot:
        case LineKind::switchFailed:
        case LineKind::switchFailedNcsi:
            endSwitch(reader, line, whole);
            break;
        case LineKind::skipped:
            if (at.isOpen && line.fields[0] == at.open) {
                skipCommand(reader, whole);
            }
            break;
        case LineKind::errorsOccurred:
            summarize(reader);
            break;
        case LineKind::updateComplete:
            endRun(reader, 0);
            break;
        default:
            break;
    }
}

// What was taken for a quote's end may have been quoted itself, and the true one
// stands behind the rest of the quote on the same line.
static std::string_view endOfForgery(const LogReader& reader, std::string_view line) {
    Return found;
    if (findReturn(line, found)) {
        const bool known = findCheckpoint(reader, found.command) != reader.checkpoints.size();
        return known ? found.line : line;
    }
    for (const std::string_view begin : {"*** Successfully completed ", "!!! Error performing "}) {
        const size_t at = line.rfind(begin);
        if (at != std::string_view::npos) {
            return line.substr(at);
        }
    }
    return line;
}

static void readToolText(LogReader& reader, std::string_view line) {
    if (readBrokenCommand(reader, line)) {
        return;
    }
    line = endOfForgery(reader, line);
    if (readCommandLine(reader, line) || readRow(reader, line)) {
        return;
    }
    obey(reader, readToolLine(line), line);
}

// The field YB stands in the rest of the line that shows its command's result.
static std::string_view endOfYb(LogReader& reader, std::string_view line) {
    reader.at.quote = Quote::none;
    const size_t at = line.rfind("*** YB data is correct on ");
    return at == std::string_view::npos ? std::string_view() : line.substr(at);
}

void readLine(LogReader& reader, std::string_view line, size_t number) {
    reader.number = number;
    if (number == 1) {
        reader.isLog = line == textOf(LineKind::header);
    }
    if (!reader.isLog) {
        return;
    }
    reader.at.headerOnly = reader.at.headerOnly && (number == 1 || trimmed(line).empty());
    std::string_view own = line;
    switch (reader.at.quote) {
        case Quote::none:
            break;
        case Quote::output:
            own = endOfOutput(reader, line);
            break;
        case Quote::listing:
            own = endOfListing(line);
            break;
        case Quote::directory:
            own = endOfDirectory(reader, line);
            break;
        case Quote::yb:
            own = endOfYb(reader, line);
            break;
    }
    if (own.empty()) {
        return;
    }
    reader.at.quote = Quote::none;
    readToolText(reader, own);
}

Run finishLog(LogReader& reader) {
    Run& run = reader.run;
    const Position& at = reader.at;
    run.lines = reader.number;
    run.operation = at.operation;
    run.exitStatus = at.exitStatus;
    if (!run.exitStatus && (at.removedQuitFile || at.headerOnly)) {
        run.exitStatus = 0;
    }
    const bool ended = run.exitStatus && !at.isOpen && at.quote == Quote::none;
    if (!ended) {
        run.cutOff = true;
        run.cutIn = at.isOpen ? at.open : "";
        run.exitStatus.reset();
    }
    return std::move(reader.run);
}

}  // namespace report
