// Makes adapters.json for virtual adapters that stand for a server's.
//   mkadapters LOG... >FILE     the logs of its runs, the oldest first; a directory
//                               stands for all logs in it
// A comment says what no log told and is assumed.

#include <algorithm>
#include <cstdio>
#include <exception>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "exit_code.h"
#include "input.h"
#include "schema.h"
#include "text.h"
#include "told_server.h"
#include "update/yb_text.h"

namespace emulator {

namespace {

// No log tells these: what adapters of this family have.
constexpr const char* vendorId = "1D2B";
constexpr const char* subsystemVendorId = "1E57";
// One for which no field but the stamp is looked after.
constexpr int plainSubsystem = 0x0B22;

using Ports = std::vector<const ToldPort*>;

// What becomes the comment of a port or an adapter.
struct Notes {
    std::string assumed;  // a list
    std::string remarks;  // sentences
};

void assume(Notes& notes, const char* what) {
    notes.assumed += (notes.assumed.empty() ? "" : ", ") + std::string(what);
}

std::string textOf(const Notes& notes) {
    const std::string assumed =
        notes.assumed.empty() ? "" : "Assumed, because no log tells it: " + notes.assumed + ".";
    return assumed + notes.remarks;
}

// Ports on one bus are one adapter; of one whose bus no log tells, nobody knows.
std::vector<Ports> groupPorts(const ToldServer& server) {
    std::vector<Ports> adapters;
    for (const ToldPort& port : server) {
        const auto same = std::find_if(
            adapters.begin(), adapters.end(),
            [&port](const Ports& group) { return port.bus && group.front()->bus == port.bus; });
        if (same == adapters.end()) {
            adapters.push_back({&port});
        } else {
            same->push_back(&port);
        }
    }
    return adapters;
}

template <typename Known>
const ToldPort* firstThat(const Ports& ports, Known&& known) {
    const auto found = std::find_if(ports.begin(), ports.end(),
                                    [&known](const ToldPort* port) { return known(*port); });
    return found == ports.end() ? nullptr : *found;
}

Json toPort(const ToldPort& port, size_t place) {
    Json json = {{"mac", port.mac}};
    Notes notes;
    if (!port.inTable) {
        assume(notes, "device and function");
    }
    if (!port.driver) {
        assume(notes, "a driver");
    }
    if (!notes.assumed.empty()) {
        json["comment"] = textOf(notes);
    }
    json["device"] = port.inTable ? port.device : 0;
    json["function"] = port.inTable ? port.function : static_cast<int>(place);
    const std::string driver = port.driver.value_or("assumed");
    json["driver"] = driver.empty() ? Json() : Json(driver);
    if (port.inTable && !port.bus) {
        json["reported"] = false;
    }
    return json;
}

bool sameComponents(const ToldPort& a, const ToldPort& b) {
    return std::equal(a.components.begin(), a.components.end(), b.components.begin(),
                      b.components.end(),
                      [](const report::ListedComponent& x, const report::ListedComponent& y) {
                          return x.name == y.name && x.line == y.line && x.version == y.version;
                      });
}

Json toComponents(const Ports& ports, Notes& notes) {
    const ToldPort* listed = firstThat(ports, [](const ToldPort& p) { return p.inDirectory; });
    const ToldPort& source = listed != nullptr ? *listed : *ports.front();
    Json components = Json::object();
    for (const report::ListedComponent& component : source.components) {
        components[component.name] =
            component.line.empty() ? Json(component.version)
                                   : Json{{"version", component.version}, {"line", component.line}};
    }
    if (listed == nullptr) {
        assume(notes, "the lines of its directory, and no FCODE in it");
    }
    for (const ToldPort* port : ports) {
        if ((listed == nullptr || port->inDirectory) && !sameComponents(*port, source)) {
            notes.remarks +=
                " " + port->mac + " lists other firmware than " + source.mac + ", whose is taken.";
        }
    }
    return components;
}

Json toVpd(const Ports& ports, Notes& notes) {
    Json vpd = Json::object();
    const ToldPort* stamped =
        firstThat(ports, [](const ToldPort& p) { return p.stamp.has_value(); });
    if (stamped == nullptr) {
        assume(notes, "no stamp (so every flash is forced)");
    } else if (!stamped->stamp->empty()) {
        vpd["V0"] = *stamped->stamp;
    }
    if (firstThat(ports, [](const ToldPort& p) { return p.ybIsRight; }) != nullptr) {
        char value[fwup::ybTextSize];
        fwup::formatYbValue(value, 1);
        vpd["YB"] = value;
    }
    return vpd;
}

Json toAdapter(const Ports& ports, int bus) {
    const ToldPort& first = *ports.front();
    const ToldPort* known =
        firstThat(ports, [](const ToldPort& p) { return p.subsystem.has_value(); });
    const int subsystem = known == nullptr ? plainSubsystem : *known->subsystem;
    Notes notes;
    assume(notes, "vendor and subsystem vendor");
    if (known == nullptr) {
        assume(notes, "subsystem");
    }
    if (!first.bus) {
        assume(notes, "a bus of its own");
    }
    Json components = toComponents(ports, notes);
    Json vpd = toVpd(ports, notes);
    Json list = Json::array();
    for (const ToldPort* port : ports) {
        list.push_back(toPort(*port, list.size()));
    }
    return {{"comment", textOf(notes)},
            {"vendor", vendorId},
            {"device", first.deviceId},
            {"subsystemVendor", subsystemVendorId},
            {"subsystem", format("%04X", static_cast<unsigned>(subsystem))},
            {"bus", bus},
            {"ports", std::move(list)},
            {"components", std::move(components)},
            {"vpd", std::move(vpd)}};
}

int freeBus(std::set<int>& used) {
    int bus = 1;
    while (!used.insert(bus).second) {
        bus++;
    }
    return bus;
}

Json toAdapters(const ToldServer& server) {
    std::set<int> used;
    for (const ToldPort& port : server) {
        used.insert(port.bus.value_or(0));
    }
    Json adapters = Json::array();
    for (const Ports& ports : groupPorts(server)) {
        const std::optional<int> bus = ports.front()->bus;
        adapters.push_back(toAdapter(ports, bus ? *bus : freeBus(used)));
    }
    return {{"adapters", std::move(adapters)}};
}

// All or nothing: a rehearsal on half of a server's adapters would mislead.
ToldServer readServer(const std::vector<std::string>& logs) {
    ToldServer server;
    for (const report::Source& source : report::findLogs(logs, false)) {
        report::Run run;
        std::string trouble = source.trouble;
        if (!trouble.empty() || !report::readLog(source.path, run, trouble)) {
            throw Failure(exitUsage, source.path + ": " + trouble);
        }
        try {
            takeRun(server, run);
        } catch (const Failure& failure) {
            throw Failure(failure.code, source.path + ": " + failure.what());
        }
    }
    return server;
}

void run(const std::vector<std::string>& logs) {
    if (logs.empty()) {
        throw Failure(exitUsage, "usage: mkadapters LOG... >FILE");
    }
    // A line that the utility printed can be any bytes; JSON holds only UTF-8.
    const auto lenient = Json::error_handler_t::replace;
    const std::string document = toAdapters(readServer(logs)).dump(2, ' ', false, lenient) + "\n";
    if (fputs(document.c_str(), stdout) < 0 || fflush(stdout) != 0) {
        throw Failure(exitOutput, "the adapters can't be written");
    }
}

}  // namespace

}  // namespace emulator

int main(int argc, char** argv) {
    try {
        emulator::run({argv + 1, argv + argc});
        return 0;
    } catch (const emulator::Failure& failure) {
        fprintf(stderr, "mkadapters: %s\n", failure.what());
        return failure.code;
    } catch (const std::exception& error) {
        fprintf(stderr, "mkadapters: %s\n", error.what());
        return 1;
    }
}
