#include "told_server.h"

#include <algorithm>
#include <set>
#include <utility>

#include "exit_code.h"
#include "inventory/component_table.h"
#include "text.h"

namespace emulator {

namespace {

ToldPort* findPort(ToldServer& server, const std::string& mac) {
    const auto found = std::find_if(server.begin(), server.end(),
                                    [&mac](const ToldPort& port) { return port.mac == mac; });
    return found == server.end() ? nullptr : &*found;
}

void takeListing(ToldServer& server, const report::Listing& listing) {
    ToldServer now;
    bool shared = server.empty();
    for (const report::ListedPort& listed : listing.ports) {
        if (!isHex(listed.mac, 12, 12)) {
            throw Failure(exitUsage, "lists a MAC without twelve hexadecimal digits");
        }
        const ToldPort* earlier = findPort(server, listed.mac);
        const bool same = earlier != nullptr && earlier->deviceId == listed.device;
        shared = shared || same;
        now.push_back(same ? *earlier : ToldPort());
        now.back().mac = listed.mac;
        now.back().deviceId = listed.device;
    }
    if (!shared) {
        throw Failure(exitUsage,
                      "lists none of the ports of the logs before it: another server's?");
    }
    server = std::move(now);
}

void setVersion(ToldPort& port, const std::string& name, const std::string& version) {
    auto at =
        std::find_if(port.components.begin(), port.components.end(),
                     [&name](const report::ListedComponent& known) { return known.name == name; });
    if (at == port.components.end()) {
        at = port.components.insert(at, {name, {}, version});
    }
    at->version = version;
    if (version == "NA") {
        port.components.erase(at);
    }
}

// Without boot code and management firmware the tool reads no version: then the row
// tells of none.
void takeRow(ToldPort& port, const report::Port& row) {
    port.inTable = row.device >= 0 && row.function >= 0;
    port.bus = row.bus < 0 ? std::nullopt : std::optional<int>(row.bus);
    port.device = row.device;
    port.function = row.function;
    const bool isRead = std::any_of(std::begin(row.versions), std::end(row.versions),
                                    [](const std::string& version) { return version != "NA"; });
    for (const fwup::Component& component : fwup::components) {
        const size_t column = fwup::columnOf(component);
        const bool isListed = component.needles[0] != nullptr;
        if (isRead && isListed && column < report::versionColumns) {
            setVersion(port, component.name, row.versions[column]);
        }
    }
}

void takeVisit(ToldPort& port, const report::Visit& visit) {
    port.driver = visit.down ? std::string() : visit.driver;
    port.ybIsRight = visit.yb == report::YbOutcome::right;
    if (visit.subsystem && *visit.subsystem >= 0 && *visit.subsystem <= 0xFFFF) {
        port.subsystem = visit.subsystem;
    }
    if (visit.onCard) {
        port.stamp = visit.onCard;
    }
}

// A run reads each directory once and may show it again; the first counts.
void takeDirectories(ToldServer& server, const report::Run& run) {
    std::set<std::string> taken;
    for (const report::Directory& directory : run.directories) {
        ToldPort* port = findPort(server, directory.mac);
        if (port != nullptr && taken.insert(directory.mac).second) {
            port->components = componentsOf(directory);
            port->inDirectory = true;
        }
    }
}

}  // namespace

void takeRun(ToldServer& server, const report::Run& run) {
    if (run.listings.empty() || run.listings.front().ports.empty()) {
        throw Failure(exitUsage, "lists no adapters");
    }
    takeListing(server, run.listings.front());
    for (const report::Port& row : run.before) {
        if (ToldPort* port = findPort(server, row.mac)) {
            takeRow(*port, row);
        }
    }
    takeDirectories(server, run);
    for (const report::Visit& visit : run.visits) {
        if (ToldPort* port = findPort(server, visit.mac)) {
            takeVisit(*port, visit);
        }
    }
}

}  // namespace emulator
