#include "commands.h"

#include <utility>

#include "command_text.h"

namespace report {

// Longer commands than the tool can write are none of its own.
constexpr size_t commandLimit = 1024;

constexpr std::string_view listingKey = "listing";

// --- What a command means

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
    at.open = std::string(line.substr(0, commandLimit));
    at.isOpen = true;
    at.inTable = false;
    at.awaited = Awaited::nothing;
    const std::string_view verb = wordOf(line, 2);
    if (verb == "dir" && endsWith(line, " >" + std::string(wordOf(line, 1))) && !at.listed) {
        addPort(reader, wordOf(line, 1));
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

// The commands of a discovery, whose failure the tool passes over.
static bool isReading(std::string_view line) {
    const std::string_view verb = wordOf(line, 2);
    return line == listCommand || (verb == "dir" && wordOf(line, 3).substr(0, 1) == ">");
}

static void noteFailedReading(LogReader& reader, std::string_view line, int code) {
    const bool ofPort = line != listCommand;
    const std::string told = std::string(commandResult) + std::string(line) +
                             std::string(returnedCode) + std::to_string(code);
    addFinding(reader, LineKind::notRead, told, ofPort ? wordOf(line, 1) : "");
}

static void beginYb(LogReader& reader, std::string_view line) {
    Visit* visit = visitOf(reader, wordOf(line, 1));
    if (wordOf(line, 4) != "vpdyb") {
        return;
    }
    reader.at.quote = Quote::yb;
    if (visit != nullptr && !visit->stampRead) {
        visit->ybLine = reader.number;
    }
}

// What the tool does with the result of a command decides what may come next.
static void judgeReturn(LogReader& reader, std::string_view line, int code) {
    Position& at = reader.at;
    const std::string_view verb = wordOf(line, 2);
    const std::string_view subject = wordOf(line, 3);
    if (code != 0 && isReading(line)) {
        noteFailedReading(reader, line, code);
    }
    if (isFlash(line)) {
        closeFlash(reader, code);
    } else if (line == listCommand) {
        reader.run.listings.emplace_back();
        beginQuote(reader, Quote::listing, std::string(listingKey));
    } else if (line == "rm q") {
        at.removedQuitFile = true;
    } else if (verb == "crc") {
        at.awaited = Awaited::crc;
    } else if (verb == "dir" && subject == "-delete") {
        at.awaited = Awaited::blockRemoval;
    } else if (verb == "cfg" && subject == "-show") {
        beginYb(reader, line);
    } else if (verb == "cfg" && subject == "-vpdyb") {
        at.awaited = Awaited::ybFix;
    } else if (verb == "cfg" && subject == "-noreset") {
        at.awaited = Awaited::stamp;
    } else if (verb == "cfg") {
        at.awaited = Awaited::switching;
    }
}

static void closeCommand(LogReader& reader, std::string_view command, int code) {
    // A copy: going back changes what it may point into.
    const std::string closed(command);
    if ((!reader.at.isOpen || reader.at.open != closed) && !reopen(reader, closed)) {
        return;
    }
    if (Checkpoint* checkpoint = findCheckpoint(reader, closed)) {
        checkpoint->code = code;
    }
    reader.at.quote = Quote::none;
    reader.at.isOpen = false;
    judgeReturn(reader, closed, code);
}

void skipCommand(LogReader& reader, std::string_view line) {
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

// --- Its lines

static void breakCommand(LogReader& reader, std::string_view begin, bool isReturn) {
    reader.at.broken = std::string(begin.substr(0, commandLimit)) + "\n";
    reader.at.brokenReturn = isReturn;
}

// A list that has begun ends with the question that only "q" answers.
static void noteBrokenListing(LogReader& reader) {
    if (reader.run.listings.back().state == fwup::TableState::rows) {
        addFinding(reader, LineKind::notRead, "The utility's list breaks off and may lack ports");
    }
}

static void readOpening(LogReader& reader, std::string_view rest) {
    if (!endsWith(rest, "\"")) {
        breakCommand(reader, rest, false);
        return;
    }
    const std::string_view opened = rest.substr(0, rest.size() - 1);
    if (opened == removeList && reopen(reader, listingKey)) {
        reader.at.quote = Quote::none;
        noteBrokenListing(reader);
    }
    openCommand(reader, opened);
}

static void readResult(LogReader& reader, std::string_view rest) {
    const size_t end = rest.rfind(returnedCode);
    int code = 0;
    if (end == std::string_view::npos) {
        breakCommand(reader, rest, true);
    } else if (readNumber(rest.substr(end + returnedCode.size()), code)) {
        closeCommand(reader, rest.substr(0, end), code);
    }
}

bool readCommandLine(LogReader& reader, std::string_view line) {
    if (startsWith(line, aboutTo)) {
        readOpening(reader, line.substr(aboutTo.size()));
        return true;
    }
    if (startsWith(line, commandResult)) {
        readResult(reader, line.substr(commandResult.size()));
        return true;
    }
    return false;
}

bool readBrokenCommand(LogReader& reader, std::string_view line) {
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
    if (at.brokenReturn && startsWith(line, returnedCode) &&
        readNumber(line.substr(returnedCode.size()), number)) {
        closeCommand(reader, whole, number);
        return true;
    }
    return false;
}

}  // namespace report
