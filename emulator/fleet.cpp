#include "fleet.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "text.h"

namespace emulator {

namespace {

// Those of the machine, for packages that bring none of their own.
const char* const installedFleet = "/var/lib/virtual-adapters/adapters.json";

}  // namespace

Fleet loadFleet() {
    char* real = realpath("adapters.json", nullptr);
    if (real == nullptr && errno == ENOENT) {
        real = realpath(installedFleet, nullptr);
    }
    if (real == nullptr) {
        throw Failure(exitFleet, std::string("adapters.json: ") + strerror(errno));
    }
    Fleet fleet;
    fleet.path = real;
    free(real);
    try {
        fleet.document = Json::parse(readFile(fleet.path, exitFleet));
    } catch (const Json::exception& error) {
        throw Failure(exitFleet, std::string("adapters.json: ") + error.what());
    }
    checkDocument(fleet.document);
    return fleet;
}

void saveFleet(const Fleet& fleet) {
    // A value given on a command line can be any bytes; JSON holds only UTF-8.
    const auto lenient = Json::error_handler_t::replace;
    replaceFile(fleet.path, fleet.document.dump(2, ' ', false, lenient) + "\n");
}

std::vector<Port> portsOf(Fleet& fleet, const char* shown) {
    std::vector<Port> found;
    for (Json& adapter : fleet.document["adapters"]) {
        for (Json& port : adapter["ports"]) {
            if (port.value(shown, true)) {
                found.push_back({&adapter, &port});
            }
        }
    }
    return found;
}

Port findPort(Fleet& fleet, const std::string& mac) {
    for (const Port& port : portsOf(fleet, "listed")) {
        if (sameText((*port.port)["mac"].get_ref<const std::string&>(), mac)) {
            return port;
        }
    }
    throw Failure(exitNoPort, "no adapter port has the MAC " + mac);
}

std::string componentText(const Json& entry, const char* key, const std::string& fallback) {
    if (entry.is_object()) {
        return entry.value(key, fallback);
    }
    return strcmp(key, "version") == 0 ? entry.get<std::string>() : fallback;
}

bool componentEnabled(const Json& entry) {
    return !entry.is_object() || entry.value("enabled", true);
}

void setComponent(Json& entry, const char* key, const Json& value) {
    if (!entry.is_object() && strcmp(key, "version") == 0) {
        entry = value;
        return;
    }
    if (!entry.is_object()) {
        entry = Json{{"version", entry}};
    }
    entry[key] = value;
}

std::string vpdField(const Json& adapter, const std::string& name) {
    return adapter.contains("vpd") ? adapter["vpd"].value(name, std::string()) : std::string();
}

}  // namespace emulator
