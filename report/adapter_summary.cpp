#include <strings.h>

#include <algorithm>
#include <map>
#include <set>

#include "work.h"

namespace report {

bool isAbsent(const std::string& version) {
    return strcasecmp(version.c_str(), "NA") == 0;
}

// The rows of each port, in the order of the table: the utility may list a MAC twice.
using Rows = std::map<std::string, std::vector<const Port*>>;

static Rows indexRows(const std::vector<Port>& table) {
    Rows rows;
    for (const Port& port : table) {
        rows[port.mac].push_back(&port);
    }
    return rows;
}

// The row of a port that was told so many times before.
static const Port* findRow(const Rows& rows, const std::string& mac, size_t place) {
    const Rows::const_iterator at = rows.find(mac);
    return at == rows.end() ? nullptr : at->second[std::min(place, at->second.size() - 1)];
}

// The ports of a bus are one adapter. A bus that isn't known (-1) says nothing
// of the kind; the ports of a run without a table stand together.
static AdapterSummary& placeFor(Summary& summary, const Port* row) {
    const bool hasBus = row != nullptr && row->bus != -1;
    for (AdapterSummary& adapter : summary.adapters) {
        if (hasBus ? adapter.bus == row->bus : row == nullptr && !adapter.bus) {
            return adapter;
        }
    }
    summary.adapters.emplace_back();
    if (hasBus) {
        summary.adapters.back().bus = row->bus;
    }
    return summary.adapters.back();
}

// Those of the table, or of the list where there is none, and any that the pass
// visits besides.
static std::vector<std::string> macsOf(const Run& run) {
    std::vector<std::string> macs;
    for (const Port& port : run.before) {
        macs.push_back(port.mac);
    }
    if (run.before.empty()) {
        macs = run.macs;
    }
    std::set<std::string> told(macs.begin(), macs.end());
    for (const Visit& visit : run.visits) {
        if (told.insert(visit.mac).second) {
            macs.push_back(visit.mac);
        }
    }
    return macs;
}

static void addPorts(const Run& run, Summary& summary) {
    const Rows before = indexRows(run.before);
    const Rows after = indexRows(run.after);
    std::map<std::string, size_t> told;
    for (const std::string& mac : macsOf(run)) {
        PortSummary port;
        const size_t place = told[mac]++;
        port.mac = mac;
        port.before = findRow(before, mac, place);
        port.after = findRow(after, mac, place);
        if (port.before != nullptr) {
            port.label = port.before->label;
            if (port.before->bus != -1) {
                port.device = port.before->device;
                port.function = port.before->function;
            }
        }
        placeFor(summary, port.before).ports.push_back(port);
    }
}

static void addVisit(const Visit& visit, AdapterSummary& adapter, bool isFirst) {
    for (PortSummary& port : adapter.ports) {
        if (port.mac == visit.mac) {
            port.down = visit.down || isAbsent(visit.driver);
            port.corrupted = visit.corrupted;
            if (!isAbsent(visit.driver)) {
                port.driver = visit.driver;
            }
        }
    }
    // A later port of the adapter reads the stamp of this very run.
    if (isFirst) {
        adapter.stampBefore = visit.onCard;
    }
    if (visit.stamped) {
        adapter.stampWritten = visit.build;
    }
    if (visit.crc != CrcOutcome::none) {
        adapter.checks.push_back(&visit);
    }
    adapter.yb = std::max(adapter.yb, visit.yb);
}

static std::map<std::string, AdapterSummary*> indexAdapters(Summary& summary) {
    std::map<std::string, AdapterSummary*> adapters;
    for (AdapterSummary& adapter : summary.adapters) {
        for (const PortSummary& port : adapter.ports) {
            adapters.emplace(port.mac, &adapter);
        }
    }
    return adapters;
}

void addAdapters(const Run& run, Summary& summary) {
    addPorts(run, summary);
    const std::map<std::string, AdapterSummary*> adapters = indexAdapters(summary);
    std::set<const AdapterSummary*> seen;
    for (const Visit& visit : run.visits) {
        AdapterSummary* adapter = adapters.at(visit.mac);
        addVisit(visit, *adapter, seen.insert(adapter).second);
        if (visit.build) {
            summary.buildVersion = visit.build;
        }
    }
    for (const Flash& flash : run.flashes) {
        adapters.at(flash.mac)->flashes.push_back(&flash);
    }
}

const AdapterSummary* adapterOf(const Summary& summary, const std::string& mac) {
    for (const AdapterSummary& adapter : summary.adapters) {
        for (const PortSummary& port : adapter.ports) {
            if (port.mac == mac) {
                return &adapter;
            }
        }
    }
    return nullptr;
}

}  // namespace report
