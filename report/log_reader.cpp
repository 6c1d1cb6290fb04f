#include "log_reader.h"

#include <utility>

#include "command_text.h"
#include "commands.h"
#include "effects.h"
#include "quotes.h"

namespace report {

static void addRow(LogReader& reader, const TableRow& row) {
    Port port;
    port.mac = std::string(row.mac);
    port.label = std::string(row.label);
    port.bus = row.bus;
    port.device = row.device;
    port.function = row.function;
    for (size_t i = 0; i < versionColumns; i++) {
        port.versions[i] = std::string(row.versions[i]);
    }
    (reader.at.tableIsSecond ? reader.run.after : reader.run.before).push_back(std::move(port));
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

static void readToolText(LogReader& reader, std::string_view line) {
    if (readBrokenCommand(reader, line)) {
        return;
    }
    line = endOfForgery(reader, line);
    if (!readCommandLine(reader, line) && !readRow(reader, line)) {
        obey(reader, readToolLine(line));
    }
}

static void keepQuoted(Run& run, Quote quote, std::string_view line) {
    if (quote == Quote::listing) {
        takeListed(run.listings.back(), line);
    } else if (quote == Quote::directory) {
        takeListed(run.directories.back(), line);
    }
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
    const Quote quote = reader.at.quote;
    const std::string_view own = endOfQuote(reader, line);
    keepQuoted(reader.run, quote, line.substr(0, line.size() - own.size()));
    if (own.empty()) {
        return;
    }
    reader.at.quote = Quote::none;
    readToolText(reader, own);
}

// Of a command's output, only a line with the result of one can be its end.
size_t skippableBytes(const LogReader& reader, std::string_view bytes) {
    if (reader.at.quote != Quote::output || !reader.at.quotedText) {
        return 0;
    }
    const size_t result = bytes.find(returnedCode);
    const size_t within = result != std::string_view::npos ? result : bytes.rfind('\n');
    if (within == std::string_view::npos || within == 0) {
        return 0;
    }
    const size_t feed = bytes.rfind('\n', within - 1);
    return feed == std::string_view::npos ? 0 : feed + 1;
}

void readBytes(LogReader& reader, LineCutter& cutter, std::string_view bytes) {
    cutLines(
        cutter, bytes,
        [&reader](std::string_view line, size_t number) { readLine(reader, line, number); },
        [&reader](std::string_view rest) { return skippableBytes(reader, rest); });
}

void readRest(LogReader& reader, LineCutter& cutter) {
    finishLines(cutter, [&reader](std::string_view line, size_t number) {
        readLine(reader, line, number);
    });
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
    if (at.quote == Quote::directory) {
        run.directories.pop_back();  // nobody knows how it goes on
    }
    return std::move(reader.run);
}

}  // namespace report
