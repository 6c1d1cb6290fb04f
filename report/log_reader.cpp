#include "log_reader.h"

#include <utility>

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

void readLine(LogReader& reader, std::string_view line, size_t number) {
    reader.number = number;
    if (number == 1) {
        reader.isLog = line == textOf(LineKind::header);
    }
    if (!reader.isLog) {
        return;
    }
    reader.at.headerOnly = reader.at.headerOnly && (number == 1 || trimmed(line).empty());
    const std::string_view own = endOfQuote(reader, line);
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
