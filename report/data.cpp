#include "data.h"

#include "names.h"
#include "work.h"

namespace report {

template <typename Value>
static Json orNull(const std::optional<Value>& value) {
    return value ? Json(*value) : Json(nullptr);
}

static Json orNull(const char* text) {
    return text == nullptr ? Json(nullptr) : Json(text);
}

static Json orNull(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

// The heading of the tool's table, in small letters.
static std::string columnName(size_t column) {
    std::string name = fwup::versionColumns[column].heading;
    for (char& c : name) {
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    }
    return name;
}

static Json columnOf(const Flash& flash) {
    const size_t column =
        flash.component == nullptr ? versionColumns : fwup::columnOf(*flash.component);
    return column == versionColumns ? Json(nullptr) : Json(columnName(column));
}

static Json versionsOf(const Port* row) {
    if (row == nullptr) {
        return nullptr;
    }
    Json versions = Json::object();
    for (size_t i = 0; i < versionColumns; i++) {
        const std::string& version = row->versions[i];
        versions[columnName(i)] = isAbsent(version) ? Json(nullptr) : Json(version);
    }
    return versions;
}

static Json portData(const PortSummary& port) {
    const Port* row = port.before;
    const bool placed = row != nullptr && row->bus != -1;
    const bool driven = port.visit != nullptr && !isAbsent(port.visit->driver);
    return {{"mac", port.mac},
            {"label", row == nullptr ? Json(nullptr) : Json(row->label)},
            {"device", placed ? Json(row->device) : Json(nullptr)},
            {"function", placed ? Json(row->function) : Json(nullptr)},
            {"driver", driven ? Json(port.visit->driver) : Json(nullptr)},
            {"down", isDown(port)},
            {"corrupted", port.visit != nullptr && port.visit->corrupted},
            {"before", versionsOf(port.before)},
            {"after", versionsOf(port.after)}};
}

static Json flashData(const Flash& flash) {
    return {{"mac", flash.mac},
            {"component", componentOf(flash)},
            {"column", columnOf(flash)},
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
    for (const Visit* visit : adapter.visits) {
        if (visit->crc != CrcOutcome::none) {
            checks.push_back({{"mac", visit->mac}, {"outcome", nameOf(visit->crc)}});
        }
    }
    return {
        {"bus", orNull(adapter.bus)},
        {"ports", std::move(ports)},
        {"stamp",
         {{"before", orNull(stampBefore(adapter))}, {"written", orNull(stampWritten(adapter))}}},
        {"flashes", std::move(flashes)},
        {"crc", std::move(checks)},
        {"yb", orNull(nameOf(ybOf(adapter)))}};
}

static Json problemsData(const std::vector<Problem>& problems) {
    Json data = Json::array();
    for (const Problem& problem : problems) {
        data.push_back({{"kind", problem.kind},
                        {"mac", orNull(problem.mac)},
                        {"component", orNull(problem.component)},
                        {"line", problem.line == 0 ? Json(nullptr) : Json(problem.line)},
                        {"text", problem.text},
                        {"cause", problem.cause},
                        {"adapters", problem.adapters},
                        {"next", problem.next}});
    }
    return data;
}

static Json nextData(const std::vector<Step>& next) {
    Json data = Json::array();
    for (const Step& step : next) {
        data.push_back(
            {{"code", nameOf(step.code)}, {"text", step.text}, {"command", orNull(step.command)}});
    }
    return data;
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
    return {{"log", log},
            {"version", orNull(run.version)},
            {"operation", wordsOf(run.operation).name},
            {"outcome", wordsOf(summary.outcome).name},
            {"exitStatus", orNull(run.exitStatus)},
            {"dryRun", run.dryRun},
            {"rebootNeeded", summary.rebootNeeded},
            {"buildVersion", orNull(summary.buildVersion)},
            {"adapters", std::move(adapters)},
            {"switches", std::move(switches)},
            {"problems", problemsData(summary.problems)},
            {"remarks", problemsData(summary.remarks)},
            {"next", nextData(summary.next)}};
}

std::string dumpText(const Json& document) {
    return document.dump(2) + "\n";
}

std::string dumpData(const Json& runs) {
    return dumpText({{"format", "zentrix-report/2"}, {"runs", runs}});
}

}  // namespace report
