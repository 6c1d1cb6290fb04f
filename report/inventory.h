// What the utility's own lists say of the adapters: the ports, and the lines of
// their firmware directories. It decides nothing about the run.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "inventory/component_table.h"
#include "inventory/device_table.h"

namespace report {

struct ListedPort {
    std::string mac;
    std::string device;  // its PCI device ID, as it is listed
};

// One copy of the utility's list.
struct Listing {
    std::vector<ListedPort> ports;  // the supported ones
    fwup::TableState state = fwup::TableState::beforeHeader;
};

// One copy of a port's firmware directory.
struct Directory {
    std::string mac;
    std::vector<std::string> lines;
};

// A component as its directory's line shows it.
struct ListedComponent {
    std::string name;     // as the virtual adapters call it
    std::string line;     // up to the version
    std::string version;  // never empty
};

// Takes the next quoted line. What no tool would read is left out, and so is what
// goes beyond a bound that no server reaches.
void takeListed(Listing& listing, std::string_view line);
void takeListed(Directory& directory, std::string_view line);

bool lists(const Directory& directory, const fwup::IscsiBlock& block);

// The components in the order of their lines, each found as the tool finds it. A
// line that serves two of them is the first one's.
std::vector<ListedComponent> componentsOf(const Directory& directory);

}  // namespace report
