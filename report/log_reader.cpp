#include "log_reader.h"

#include <utility>

#include "commands.h"
#include "lines.h"

namespace report {

// --- Quotes: the end of a line that is the tool's; empty when none of it is

static std::string_view endOfOutput(LogReader& reader, std::string_view line) {
    const bool mayBeHeldBack =
        !reader.quotedText && reader.open.find("upgrade") != std::string::npos;
    if (mayBeHeldBack && line == "Skipping command: \"" + reader.open + "\"") {
        return line;
    }
    reader.quotedText = reader.quotedText || !trimmed(line).empty();
    Return found;
    if (!findReturn(line, found)) {
        return {};
    }
    if (found.command == reader.open) {
        return found.line;
    }
    doubtReturn(reader, found.line, found.command);
    return {};
}

static std::string_view endOfListing(std::string_view line) {
    if (!startsWith(line, aboutTo) || !endsWith(line, "\"")) {
        return {};
    }
    const std::string_view next = line.substr(aboutTo.size(), line.size() - aboutTo.size() - 1);
    const bool again = startsWith(next, "./lnxfwvt2 <q >>") && isLogged(next);
    return next == removeList || again ? line : std::string_view();
}

// The outcome of the step that a directory belongs to, with the port's MAC. The
// directory's last line may lack its line feed.
static std::string_view outcomeBehind(const LogReader& reader, std::string_view line) {
    for (const std::string_view begin : {"*** Successfully completed ", "!!! Error performing "}) {
        const size_t at = line.rfind(begin);
        const ToolLine found =
            readToolLine(at == std::string_view::npos ? std::string_view() : line.substr(at));
        if (found.line.outcomeOf == reader.awaited && found.fields[0] == reader.directoryOf) {
            return line.substr(at);
        }
    }
    return {};
}

static std::string_view endOfDirectory(const LogReader& reader, std::string_view line) {
    constexpr std::string_view removal = "About to execute: \"rm ";
    if (reader.awaited != Awaited::nothing) {
        return outcomeBehind(reader, line);
    }
    if (startsWith(line, removal) && endsWith(line, "\"")) {
        const std::string_view rest = line.substr(removal.size());
        return isKnown(reader, rest.substr(0, rest.size() - 1)) ? line : std::string_view();
    }
    const ToolLine found = readToolLine(line);
    return isOfDirectory(found) && isKnown(reader, found.fields[0]) ? line : std::string_view();
}

// The field YB stands in the rest of the line that shows its command's result.
static std::string_view endOfYb(LogReader& reader, std::string_view line) {
    reader.quote = Quote::none;
    const size_t at = line.rfind("*** YB data is correct on ");
    return at == std::string_view::npos ? std::string_view() : line.substr(at);
}

static std::string_view endOfQuote(LogReader& reader, std::string_view line) {
    switch (reader.quote) {
        case Quote::output: return endOfOutput(reader, line);
        case Quote::listing: return endOfListing(line);
        case Quote::directory: return endOfDirectory(reader, line);
        case Quote::yb: return endOfYb(reader, line);
        case Quote::none: break;
    }
    return line;
}

static void keepQuoted(LogReader& reader, std::string_view line) {
    constexpr size_t lastQuotedLimit = 160;
    const std::string_view text = trimmed(line);
    if (reader.quote == Quote::listing) {
        takeListed(reader.run.listings.back(), line);
    } else if (reader.quote == Quote::directory) {
        takeListed(reader.run.directories.back(), line);
    } else if (reader.quote == Quote::output && !text.empty()) {
        reader.lastQuoted = text.substr(text.size() - std::min(text.size(), lastQuotedLimit));
    }
}

// --- The tool's own text

static bool readRow(LogReader& reader, std::string_view line) {
    Port row;
    if (!reader.inTable) {
        return false;
    }
    reader.inTable = readTableRow(line, row);
    if (reader.inTable) {
        (reader.tableIsSecond ? reader.run.after : reader.run.before).push_back(std::move(row));
    }
    return reader.inTable;
}

static void readToolText(LogReader& reader, std::string_view line) {
    if (!readBrokenCommand(reader, line) && !readCommandLine(reader, line) &&
        !readRow(reader, line)) {
        obey(reader, line);
    }
}

static void readPlainLine(LogReader& reader, std::string_view line) {
    const std::string_view own = endOfQuote(reader, line);
    keepQuoted(reader, line.substr(0, line.size() - own.size()));
    if (!own.empty()) {
        reader.endedListing = reader.quote == Quote::listing;
        reader.quote = Quote::none;
        readToolText(reader, own);
    }
}

void readLine(LogReader& reader, std::string_view line, size_t number) {
    const std::string text = plainText(line);
    reader.number = number;
    if (number == 1) {
        reader.isLog = text == heading;
    } else if (endsWith(text, heading) && reader.secondHeading == 0) {
        reader.secondHeading = number;
    }
    if (!reader.isLog || reader.secondHeading != 0) {
        return;
    }
    reader.headingOnly = reader.headingOnly && (number == 1 || trimmed(text).empty());
    readPlainLine(reader, text);
}

void readBytes(LogReader& reader, LineCutter& cutter, std::string_view bytes) {
    cutLines(cutter, bytes,
             [&reader](std::string_view line, size_t number) { readLine(reader, line, number); });
}

void readRest(LogReader& reader, LineCutter& cutter) {
    finishLines(cutter, [&reader](std::string_view line, size_t number) {
        readLine(reader, line, number);
    });
}

// The last line of an update tells its outcome; the other modes have none.
Run finishLog(LogReader& reader) {
    Run& run = reader.run;
    run.lines = reader.number;
    run.headingAlone = reader.headingOnly;
    run.passOver = reader.passOver;
    if (!run.exitStatus && reader.removedQuitFile && run.operation != Operation::update) {
        run.exitStatus = 0;
    }
    if (!run.exitStatus || reader.isOpen || reader.quote != Quote::none) {
        run.cutOff = true;
        run.cutIn = reader.isOpen ? reader.open : "";
        run.exitStatus.reset();
    }
    if (reader.quote == Quote::directory) {
        run.directories.pop_back();  // nobody knows how it goes on
    }
    return std::move(reader.run);
}

}  // namespace report
