// The report: any bytes as a log, in pieces of any size. The data that comes
// out always parses, and the screen holds nothing that a terminal obeys.
#include <algorithm>

#include "data.h"
#include "fuzz_io.h"
#include "line_cutter.h"
#include "log_reader.h"
#include "screen.h"

// The first byte says how large the pieces are.
static report::Run readInputAsLog(const uint8_t* data, size_t size, bool skipping) {
    report::LineCutter cutter;
    report::LogReader reader;
    const auto take = [&reader](std::string_view line, size_t number) {
        require(line.size() <= report::lineLimit);
        report::readLine(reader, line, number);
    };
    const size_t pieceSize = size == 0 ? 1 : 1 + size_t{data[0]} * 16;
    const std::string log = std::string("Kelvane Firmware Update Log.\n") +
                            std::string(reinterpret_cast<const char*>(data), size);
    for (size_t at = 0; at < log.size(); at += pieceSize) {
        const std::string_view piece = std::string_view(log).substr(at, pieceSize);
        if (skipping) {
            report::readBytes(reader, cutter, piece);
        } else {
            report::cutLines(cutter, piece, take);
        }
    }
    report::finishLines(cutter, take);
    return report::finishLog(reader);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const report::Run run = readInputAsLog(data, size, true);
    const report::Summary summary = report::summarize(run);
    require(run.cutOff == !run.exitStatus.has_value());
    report::Json runs = report::Json::array();
    runs.push_back(report::toData("log", run, summary));
    const report::Json read = report::Json::parse(report::dumpData(runs));
    require(read["runs"][0]["log"] == "log" && read["runs"][0].size() == runs[0].size());
    const std::string screen = report::toScreen("log", run, summary, false);
    const auto isControl = [](char c) { return (c >= 0 && c < ' ' && c != '\n') || c == 0x7F; };
    require(std::none_of(screen.begin(), screen.end(), isControl));
    // Lines that were skipped would have changed nothing.
    const report::Run slow = readInputAsLog(data, size, false);
    require(slow.lines == run.lines);
    require(report::toData("log", slow, report::summarize(slow)) == runs[0]);
    return 0;
}
