// The report: any bytes as a log, in pieces of any size. The data that comes
// out always parses, and the screen holds nothing that a terminal obeys.
#include <algorithm>

#include "data.h"
#include "fuzz_io.h"
#include "line_cutter.h"
#include "log_reader.h"
#include "screen.h"

// The first byte says how large the pieces are.
static report::Run readInputAsLog(const uint8_t* data, size_t size) {
    report::LineCutter cutter;
    report::LogReader reader;
    const size_t pieceSize = size == 0 ? 1 : 1 + size_t{data[0]} * 16;
    const std::string log = std::string("Kelvane Firmware Update Log.\n") +
                            std::string(reinterpret_cast<const char*>(data), size);
    for (size_t at = 0; at < log.size(); at += pieceSize) {
        report::readBytes(reader, cutter, std::string_view(log).substr(at, pieceSize));
        require(cutter.held.size() <= report::lineLimit);
    }
    report::readRest(reader, cutter);
    return report::finishLog(reader);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const report::Run run = readInputAsLog(data, size);
    const report::Summary summary = report::summarize(run);
    require(run.cutOff == !run.exitStatus.has_value());
    report::Json runs = report::Json::array();
    runs.push_back(report::toData("log", run, summary));
    const report::Json read = report::Json::parse(report::dumpData(runs));
    require(read["runs"][0]["log"] == "log" && read["runs"][0].size() == runs[0].size());
    const std::string screen = report::toScreen("log", run, summary, false);
    const auto isPlain = [](char c) { return (c >= ' ' && c <= '~') || c == '\n' || c == '\t'; };
    require(std::all_of(screen.begin(), screen.end(), isPlain));
    return 0;
}
