#include "data.h"

#include "names.h"

namespace report {

template <typename Value>
static Json orNull(const std::optional<Value>& value) {
    return value ? Json(*value) : Json(nullptr);
}

static Json orNull(const char* text) {
    return text == nullptr ? Json(nullptr) : Json(text);
}

static Json versionsOf(const Port* row) {
    if (row == nullptr) {
        return nullptr;
    }
    Json versions = Json::object();
    for (size_t i = 0; i < versionColumns; i++) {
        const std::string& version = row->versions[i];
        versions[columnNames[i]] = version == "NA" ? Json(nullptr) : Json(version);
    }
    return versions;
}

static Json portData(const PortSummary& port) {
    return {{"mac", port.mac},
            {"label", orNull(port.label)},
            {"device", orNull(port.device)},
            {"function", orNull(port.function)},
            {"driver", orNull(port.driver)},
            {"down", port.down},
            {"corrupted", port.corrupted},
            {"before", versionsOf(port.before)},
            {"after", versionsOf(port.after)}};
}

static Json flashData(const Flash& flash) {
    return {{"mac", flash.mac},
            {"component", flash.component},
            {"image", flash.image},
            {"forced", flash.forced},
            {"exitCode", orNull(flash.exitCode)},
            {"outcome", nameOf(flash.outcome)}};
}

static Json adapterData(const AdapterSummary& adapter) {
    Json ports = Json::array();
    for (const PortSummary& port : adapter.ports) {
        ports.push_back(portData(port));
    }
    Json flashes = Json::array();
    for (const Flash* flash : adapter.flashes) {
        flashes.push_back(flashData(*flash));
    }
    Json checks = Json::array();
    for (const Visit* visit : adapter.checks) {
        checks.push_back({{"mac", visit->mac}, {"outcome", nameOf(visit->crc)}});
    }
    return {{"bus", orNull(adapter.bus)},
            {"ports", std::move(ports)},
            {"stamp",
             {{"before", orNull(adapter.stampBefore)}, {"written", orNull(adapter.stampWritten)}}},
            {"flashes", std::move(flashes)},
            {"crc", std::move(checks)},
            {"yb", orNull(nameOf(adapter.yb))}};
}

Json toData(const std::string& log, const Run& run, const Summary& summary) {
    Json adapters = Json::array();
    for (const AdapterSummary& adapter : summary.adapters) {
        adapters.push_back(adapterData(adapter));
    }
    Json switches = Json::array();
    for (const Switch& one : run.switches) {
        switches.push_back(
            {{"mac", one.mac}, {"firmware", one.firmware}, {"outcome", nameOf(one.outcome)}});
    }
    Json next = Json::array();
    for (const Step& step : summary.next) {
        next.push_back(step.text);
    }
    Json problems = Json::array();
    for (const Problem& problem : summary.problems) {
        problems.push_back({{"line", problem.line == 0 ? Json(nullptr) : Json(problem.line)},
                            {"text", problem.text},
                            {"cause", problem.cause},
                            {"adapters", problem.adapters},
                            {"next", problem.next}});
    }
    return {{"log", log},
            {"version", run.version.empty() ? Json(nullptr) : Json(run.version)},
            {"operation", nameOf(run.operation)},
            {"outcome", nameOf(summary.outcome)},
            {"exitStatus", orNull(run.exitStatus)},
            {"dryRun", summary.dryRun},
            {"rebootNeeded", summary.rebootNeeded},
            {"buildVersion", orNull(summary.buildVersion)},
            {"adapters", std::move(adapters)},
            {"switches", std::move(switches)},
            {"problems", std::move(problems)},
            {"next", std::move(next)}};
}

std::string dumpText(const Json& document) {
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string dumpData(const Json& runs) {
    return dumpText({{"format", "zentrix-report/1"}, {"runs", runs}});
}

}  // namespace report
