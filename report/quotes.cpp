#include "quotes.h"

#include <string>

#include "command_text.h"

namespace report {

// A closing line inside of a later quote.
static void doubtReturn(LogReader& reader, const Return& found) {
    const Checkpoint* checkpoint = findCheckpoint(reader, found.command);
    if (checkpoint == nullptr || !checkpoint->code || checkpoint->code == found.code) {
        return;
    }
    addFinding(reader, LineKind::doubtful, found.line);
    if (isFlash(found.command) && checkpoint->flashes > 0) {
        reader.run.flashes[checkpoint->flashes - 1].outcome = FlashOutcome::failed;
    }
}

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

// The outcome of the step that a directory belongs to, with the port's MAC. The
// directory's last line may lack its line feed.
static std::string_view outcomeBehind(const Position& at, std::string_view line) {
    static constexpr LineKind ofStamp[] = {LineKind::stampDone, LineKind::stampFailed};
    static constexpr LineKind ofCrc[] = {LineKind::crcPassed, LineKind::crcFailed};
    for (const LineKind kind : at.awaited == Awaited::stamp ? ofStamp : ofCrc) {
        const std::string_view pattern = textOf(kind);
        const std::string wanted = std::string(pattern.substr(0, pattern.find('<'))) +
                                   at.directoryOf +
                                   std::string(pattern.substr(pattern.find('>') + 1));
        if (endsWith(line, wanted)) {
            return line.substr(line.size() - wanted.size());
        }
    }
    return {};
}

static std::string_view endOfDirectory(const LogReader& reader, std::string_view line) {
    constexpr std::string_view removal = "About to execute: \"rm ";
    if (reader.at.awaited != Awaited::nothing) {
        return outcomeBehind(reader.at, line);
    }
    if (startsWith(line, removal) && endsWith(line, "\"")) {
        const std::string_view rest = line.substr(removal.size());
        return isKnown(reader, rest.substr(0, rest.size() - 1)) ? line : std::string_view();
    }
    const ToolLine found = readToolLine(line);
    const bool next = found.kind == LineKind::directory || found.kind == LineKind::noInventory;
    return next && isKnown(reader, found.fields[0]) ? line : std::string_view();
}

// The field YB stands in the rest of the line that shows its command's result.
static std::string_view endOfYb(LogReader& reader, std::string_view line) {
    reader.at.quote = Quote::none;
    const size_t at = line.rfind("*** YB data is correct on ");
    return at == std::string_view::npos ? std::string_view() : line.substr(at);
}

std::string_view endOfQuote(LogReader& reader, std::string_view line) {
    switch (reader.at.quote) {
        case Quote::output:
            return endOfOutput(reader, line);
        case Quote::listing:
            return endOfListing(line);
        case Quote::directory:
            return endOfDirectory(reader, line);
        case Quote::yb:
            return endOfYb(reader, line);
        case Quote::none:
            break;
    }
    return line;
}

std::string_view endOfForgery(LogReader& reader, std::string_view line) {
    Return found;
    if (findReturn(line, found)) {
        return findCheckpoint(reader, found.command) != nullptr ? found.line : line;
    }
    const std::string_view text = trimmed(line);
    if (!endsWith(text, "***") && !endsWith(text, "!!!")) {
        return line;
    }
    for (const std::string_view begin : {"*** Successfully completed ", "!!! Error performing "}) {
        const size_t at = line.rfind(begin);
        if (at != std::string_view::npos) {
            return line.substr(at);
        }
    }
    return line;
}

}  // namespace report
