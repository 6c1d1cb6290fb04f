#include "adapters.h"

#include <algorithm>
#include <cstdio>
#include <set>
#include <utility>

#include "update/yb_text.h"

namespace report {

// --- What runs tell

// The components of the table's columns; null for what no directory shows.
static const char* const columnComponents[versionColumns] = {
    "bc", "mfw1", "ipmi", nullptr, "mba", "ump", "ncsi", "ib", "efi", nullptr, "l2t"};

static ServerPort* findPort(Server& server, const std::string& mac) {
    const auto found = std::find_if(server.ports.begin(), server.ports.end(),
                                    [&mac](const ServerPort& port) { return port.mac == mac; });
    return found == server.ports.end() ? nullptr : &*found;
}

// The form of MAC that virtual adapters take.
static bool isMac(const std::string& mac) {
    return mac.size() == 12 && mac.find_first_not_of("0123456789ABCDEFabcdef") == std::string::npos;
}

static bool takeListing(Server& server, const Listing& listing, std::string& trouble) {
    Server now;
    bool shared = server.ports.empty();
    for (const ListedPort& listed : listing.ports) {
        if (!isMac(listed.mac)) {
            trouble = "lists a MAC without twelve hexadecimal digits";
            return false;
        }
        const ServerPort* earlier = findPort(server, listed.mac);
        const bool same = earlier != nullptr && earlier->deviceId == listed.device;
        shared = shared || same;
        now.ports.push_back(same ? *earlier : ServerPort());
        now.ports.back().mac = listed.mac;
        now.ports.back().deviceId = listed.device;
    }
    if (!shared) {
        trouble = "lists none of the ports of the logs before it: another server's?";
        return false;
    }
    server = std::move(now);
    return true;
}

static void setVersion(ServerPort& port, const std::string& name, const std::string& version) {
    auto at = std::find_if(port.components.begin(), port.components.end(),
                           [&name](const ListedComponent& known) { return known.name == name; });
    if (version == "NA") {
        if (at != port.components.end()) {
            port.components.erase(at);
        }
    } else if (at != port.components.end()) {
        at->version = version;
    } else {
        port.components.push_back({name, {}, version});
    }
}

// Without boot code and management firmware the tool reads no version: then the row
// tells of none.
static void takeRow(ServerPort& port, const Port& row) {
    port.inTable = row.device >= 0 && row.function >= 0;
    port.bus = row.bus < 0 ? std::nullopt : std::optional<int>(row.bus);
    port.device = row.device;
    port.function = row.function;
    const bool isRead = std::any_of(std::begin(row.versions), std::end(row.versions),
                                    [](const std::string& version) { return version != "NA"; });
    for (size_t i = 0; isRead && i < versionColumns; i++) {
        if (columnComponents[i] != nullptr) {
            setVersion(port, columnComponents[i], row.versions[i]);
        }
    }
}

static void takeVisit(ServerPort& port, const Visit& visit) {
    port.driver = visit.down ? std::string() : visit.driver;
    port.yb = visit.yb;
    if (visit.subsystem && *visit.subsystem >= 0 && *visit.subsystem <= 0xFFFF) {
        port.subsystem = visit.subsystem;
    }
    if (visit.onCard) {
        port.stamp = visit.onCard;
    }
}

// A run reads each directory once and may show it again; the first counts.
static void takeDirectories(Server& server, const Run& run) {
    std::set<std::string> taken;
    for (const Directory& directory : run.directories) {
        ServerPort* port = findPort(server, directory.mac);
        if (port != nullptr && taken.insert(directory.mac).second) {
            port->components = componentsOf(directory);
            port->inDirectory = true;
        }
    }
}

bool takeRun(Server& server, const Run& run, std::string& trouble) {
    if (run.listings.empty() || run.listings.front().ports.empty()) {
        trouble = "lists no adapters";
        return false;
    }
    if (!takeListing(server, run.listings.front(), trouble)) {
        return false;
    }
    for (const Port& row : run.before) {
        if (ServerPort* port = findPort(server, row.mac)) {
            takeRow(*port, row);
        }
    }
    takeDirectories(server, run);
    for (const Visit& visit : run.visits) {
        if (ServerPort* port = findPort(server, visit.mac)) {
            takeVisit(*port, visit);
        }
    }
    return true;
}

// --- What the virtual adapters need

// No log tells these: what adapters of this family have.
constexpr const char* vendorId = "1D2B";
constexpr const char* subsystemVendorId = "1E57";
// One for which no field but the stamp is looked after.
constexpr int plainSubsystem = 0x0B22;

using Ports = std::vector<const ServerPort*>;

// What becomes the comment of a port or an adapter.
struct Notes {
    std::string assumed;  // a list
    std::string remarks;  // sentences
};

static void assume(Notes& notes, const char* what) {
    notes.assumed += (notes.assumed.empty() ? "" : ", ") + std::string(what);
}

static std::string textOf(const Notes& notes) {
    const std::string assumed =
        notes.assumed.empty() ? "" : "Assumed, because no log tells it: " + notes.assumed + ".";
    return assumed + notes.remarks;
}

// Ports on one bus are one adapter; of one whose bus no log tells, nobody knows.
static std::vector<Ports> groupPorts(const Server& server) {
    std::vector<Ports> adapters;
    for (const ServerPort& port : server.ports) {
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
static const ServerPort* firstThat(const Ports& ports, Known&& known) {
    const auto found = std::find_if(ports.begin(), ports.end(),
                                    [&known](const ServerPort* port) { return known(*port); });
    return found == ports.end() ? nullptr : *found;
}

static Json toPort(const ServerPort& port, size_t place) {
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
    json["driver"] = !port.driver           ? Json("assumed")
                     : port.driver->empty() ? Json()
                                            : Json(*port.driver);
    if (port.inTable && !port.bus) {
        json["reported"] = false;
    }
    return json;
}

static bool sameComponents(const ServerPort& a, const ServerPort& b) {
    return std::equal(a.components.begin(), a.components.end(), b.components.begin(),
                      b.components.end(), [](const ListedComponent& x, const ListedComponent& y) {
                          return x.name == y.name && x.line == y.line && x.version == y.version;
                      });
}

static Json toComponents(const Ports& ports, Notes& notes) {
    const ServerPort* listed = firstThat(ports, [](const ServerPort& p) { return p.inDirectory; });
    const ServerPort& source = listed != nullptr ? *listed : *ports.front();
    Json components = Json::object();
    for (const ListedComponent& component : source.components) {
        components[component.name] =
            component.line.empty() ? Json(component.version)
                                   : Json{{"version", component.version}, {"line", component.line}};
    }
    if (listed == nullptr) {
        assume(notes, "the lines of its directory, and no FCODE in it");
    }
    for (const ServerPort* port : ports) {
        if ((listed == nullptr || port->inDirectory) && !sameComponents(*port, source)) {
            notes.remarks +=
                " " + port->mac + " lists other firmware than " + source.mac + ", whose is taken.";
        }
    }
    return components;
}

static std::string ybValue() {
    char value[fwup::ybTextSize];
    fwup::formatYbValue(value, 1);
    return value;
}

static Json toVpd(const Ports& ports, Notes& notes) {
    Json vpd = Json::object();
    const ServerPort* stamped =
        firstThat(ports, [](const ServerPort& p) { return p.stamp.has_value(); });
    if (stamped == nullptr) {
        assume(notes, "no stamp (so every flash is forced)");
    } else if (!stamped->stamp->empty()) {
        vpd["V0"] = *stamped->stamp;
    }
    if (firstThat(ports, [](const ServerPort& p) { return p.yb == YbOutcome::right; }) != nullptr) {
        vpd["YB"] = ybValue();
    }
    return vpd;
}

static std::string toHex(int id) {
    char text[9];
    snprintf(text, sizeof text, "%04X", static_cast<unsigned>(id));
    return text;
}

static Json toAdapter(const Ports& ports, int bus) {
    const ServerPort& first = *ports.front();
    const ServerPort* known =
        firstThat(ports, [](const ServerPort& p) { return p.subsystem.has_value(); });
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
    for (const ServerPort* port : ports) {
        list.push_back(toPort(*port, list.size()));
    }
    return {{"comment", textOf(notes)},
            {"vendor", vendorId},
            {"device", first.deviceId},
            {"subsystemVendor", subsystemVendorId},
            {"subsystem", toHex(known == nullptr ? plainSubsystem : *known->subsystem)},
            {"bus", bus},
            {"ports", std::move(list)},
            {"components", std::move(components)},
            {"vpd", std::move(vpd)}};
}

static int freeBus(std::set<int>& used) {
    int bus = 1;
    while (!used.insert(bus).second) {
        bus++;
    }
    return bus;
}

Json toAdapters(const Server& server) {
    std::set<int> used;
    for (const ServerPort& port : server.ports) {
        used.insert(port.bus.value_or(0));
    }
    Json adapters = Json::array();
    for (const Ports& ports : groupPorts(server)) {
        adapters.push_back(
            toAdapter(ports, ports.front()->bus ? *ports.front()->bus : freeBus(used)));
    }
    return {{"adapters", std::move(adapters)}};
}

}  // namespace report
