// The virtual adapters of one machine, as adapters.json describes them.
#pragma once

#include <string>
#include <vector>

#include "schema.h"

namespace emulator {

// NOLINTNEXTLINE(bugprone-exception-escape): the JSON type moves its keys by copying.
struct Fleet {
    std::string path;  // the real file, behind any symbolic link
    Json document;     // as checkDocument promises
};

// One port and the adapter that it shares with the adapter's other ports.
struct Port {
    Json* adapter = nullptr;
    Json* port = nullptr;
};

// Reads adapters.json in the current directory, or, where there is none, in
// /var/lib/virtual-adapters. Throws Failure(exitFleet).
Fleet loadFleet();

// Replaces the file that loadFleet read. Throws Failure(exitFleet).
void saveFleet(const Fleet& fleet);

// Every port in the order of the file; those only whose flag `shown` ("listed"
// or "reported") isn't false. They point into the fleet.
std::vector<Port> portsOf(Fleet& fleet, const char* shown);

// The first port with this MAC, in any case of letters.
// Throws Failure(exitNoPort) when there is none.
Port findPort(Fleet& fleet, const std::string& mac);

// A component entry is either a version text or an object with more about it.
std::string componentText(const Json& entry, const char* key, const std::string& fallback);
bool componentEnabled(const Json& entry);
void setComponent(Json& entry, const char* key, const Json& value);

// A VPD field of an adapter; empty when it has none.
std::string vpdField(const Json& adapter, const std::string& name);

}  // namespace emulator
