#include "commands.h"

#include <utility>

#include "log/flash_tool_code.h"
#include "text.h"

namespace report {

// Longer commands than the tool can write are none of its own.
constexpr size_t commandLimit = 1024;

// --- What a command means

// As the tool judges it.
static FlashOutcome outcomeOf(int code, bool stampForces) {
    switch (code) {
        case fwup::codeSuccess: return FlashOutcome::updated;
        case fwup::codeNoUpdateNeeded: return FlashOutcome::notNeeded;
        case fwup::codeNotApplied:
            return stampForces ? FlashOutcome::failed : FlashOutcome::refused;
        case fwup::codeRebootRequired: return FlashOutcome::rebootNeeded;
        default: return FlashOutcome::failed;
    }
}

static void openCommand(LogReader& reader, std::string_view line) {
    if (reader.isOpen || reader.awaited != Awaited::nothing) {
        doubt(reader, line);  // the end of the one before it is lost
    }
    reader.open = std::string(line.substr(0, commandLimit));
    reader.isOpen = true;
    reader.inTable = false;
    reader.awaited = Awaited::nothing;
    const bool reads =
        wordOf(line, 2) == "dir" && endsWith(line, " >" + std::string(wordOf(line, 1)));
    if (reads && !reader.listed) {
        addPort(reader, wordOf(line, 1));
    }
    if (isFlash(line) && lastFlash(reader) != nullptr) {
        lastFlash(reader)->forced = line.find(" -F -") != std::string_view::npos;
    }
    if (reader.run.operation == Operation::update && wordOf(line, 0) == "rm" &&
        isKnown(reader, wordOf(line, 1))) {
        reader.passOver = true;
    }
    if (isLogged(line)) {
        beginQuote(reader, Quote::output);
    }
}

static void closeFlash(LogReader& reader) {
    if (Flash* flash = lastFlash(reader)) {
        flash->exitCode = reader.code;
        flash->outcome = outcomeOf(reader.code, flash->stampForces == 1);
    }
}

// The commands of a discovery, whose failure the tool passes over.
static void noteFailedReading(LogReader& reader, std::string_view line) {
    const bool ofPort = wordOf(line, 2) == "dir" && startsWith(wordOf(line, 3), ">");
    if (!ofPort && line != listCommand) {
        return;
    }
    const std::string mac(ofPort ? wordOf(line, 1) : "");
    if (ofPort && !reader.passOver) {
        reader.run.unread.push_back(mac);
    }
    addFinding(reader, adviceFor(Matter::notRead),
               std::string(commandResult) + std::string(line) + std::string(returnedCode) +
                   std::to_string(reader.code),
               mac);
}

static void beginYb(LogReader& reader, std::string_view line) {
    Visit* visit = visitOf(reader, wordOf(line, 1));
    reader.quote = Quote::yb;
    if (visit != nullptr && !visit->stampRead) {
        visit->ybLine = reader.number;
    }
}

static void beginRemoval(LogReader& reader, std::string_view line) {
    for (const fwup::IscsiBlock& block : fwup::iscsiBlocks) {
        if (wordOf(line, 4) == block.name) {
            reader.run.removals.push_back({std::string(wordOf(line, 1)), &block, false});
        }
    }
}

static Awaited awaitedAfter(std::string_view line) {
    const std::string_view verb = wordOf(line, 2);
    const std::string_view subject = wordOf(line, 3);
    if (verb == "upgrade") {
        return Awaited::flash;
    }
    if (verb == "crc") {
        return Awaited::crc;
    }
    if (verb == "dir") {
        return subject == "-delete" ? Awaited::blockRemoval : Awaited::nothing;
    }
    if (verb != "cfg") {
        return Awaited::nothing;
    }
    if (subject == "-show") {
        return wordOf(line, 4) == "vpdv0" ? Awaited::stampCheck : Awaited::nothing;
    }
    return subject == "-vpdyb"     ? Awaited::ybFix
           : subject == "-noreset" ? Awaited::stamp
                                   : Awaited::switching;
}

// What the tool does with the result of a command decides what may come next.
static void closeCommand(LogReader& reader, int code) {
    const std::string closed = std::exchange(reader.open, {});
    reader.quote = Quote::none;
    reader.isOpen = false;
    reader.code = code;
    reader.awaited = awaitedAfter(closed);
    if (code != 0) {
        noteFailedReading(reader, closed);
    }
    if (isFlash(closed)) {
        closeFlash(reader);
    } else if (closed == listCommand) {
        reader.run.listings.emplace_back();
        beginQuote(reader, Quote::listing);
    } else if (closed == "rm q") {
        reader.removedQuitFile = true;
    } else if (wordOf(closed, 4) == "vpdyb") {
        beginYb(reader, closed);
    } else if (reader.awaited == Awaited::blockRemoval) {
        beginRemoval(reader, closed);
    }
}

void skipCommand(LogReader& reader, std::string_view line, const Advice& advice) {
    const bool isOfFlash = isFlash(reader.open);
    closeCommand(reader, 0);
    if (!reader.run.dryRun) {
        addFinding(reader, advice, line);
    }
    reader.run.dryRun = true;
    if (isOfFlash && lastFlash(reader) != nullptr) {
        lastFlash(reader)->exitCode.reset();
        lastFlash(reader)->outcome = FlashOutcome::heldBack;
    }
}

void doubtReturn(LogReader& reader, std::string_view line, std::string_view command) {
    doubt(reader, line);
    for (Flash& flash : reader.run.flashes) {
        if (isFlash(command) && wordOf(command, 1) == flash.mac &&
            command.find(flash.image) != std::string_view::npos) {
            flash.outcome = FlashOutcome::failed;
        }
    }
}

// --- Its lines

static void breakCommand(LogReader& reader, std::string_view begin, bool isReturn) {
    reader.broken = std::string(begin.substr(0, commandLimit)) + "\n";
    reader.brokenReturn = isReturn;
}

// A list that has begun ends with the question that only "q" answers.
static void endListing(LogReader& reader) {
    if (reader.run.listings.back().state == fwup::TableState::rows) {
        addFinding(reader, adviceFor(Matter::notRead),
                   "The utility's list breaks off and may lack ports");
    }
}

static void readOpening(LogReader& reader, std::string_view rest, bool endsListing) {
    if (!endsWith(rest, "\"")) {
        breakCommand(reader, rest, false);
        return;
    }
    const std::string_view opened = rest.substr(0, rest.size() - 1);
    if (opened == removeList && endsListing) {
        endListing(reader);
    } else if (opened == removeList) {
        doubt(reader, rest);  // the list itself held such a line
    }
    openCommand(reader, opened);
}

static void readResult(LogReader& reader, std::string_view line, std::string_view command,
                       int code) {
    if (reader.isOpen && reader.open == command) {
        closeCommand(reader, code);
    } else {
        doubtReturn(reader, line, command);
    }
}

bool readCommandLine(LogReader& reader, std::string_view line) {
    const bool endsListing = std::exchange(reader.endedListing, false);
    if (startsWith(line, aboutTo)) {
        readOpening(reader, line.substr(aboutTo.size()), endsListing);
        return true;
    }
    Return found;
    if (findReturn(line, found)) {
        readResult(reader, line, found.command, found.code);
        return true;
    }
    if (startsWith(line, commandResult)) {
        breakCommand(reader, line.substr(commandResult.size()), true);
        return true;
    }
    return false;
}

bool readBrokenCommand(LogReader& reader, std::string_view line) {
    if (reader.broken.empty()) {
        return false;
    }
    const std::string whole = std::exchange(reader.broken, {});
    int code = 0;
    if (!reader.brokenReturn && line == "\"") {
        openCommand(reader, whole);
        return true;
    }
    if (reader.brokenReturn && startsWith(line, returnedCode) &&
        readNumber(line.substr(returnedCode.size()), code)) {
        readResult(reader, line, whole, code);
        return true;
    }
    return false;
}

}  // namespace report
