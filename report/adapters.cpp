#include <strings.h>

#include <algorithm>
#include <map>
#include <set>

#include "work.h"

namespace report {

bool isAbsent(const std::string& version) {
    return strcasecmp(version.c_str(), "NA") == 0;
}

bool isDown(const PortSummary& port) {
    return port.visit != nullptr && (port.visit->down || isAbsent(port.visit->driver));
}

std::optional<std::string> stampBefore(const AdapterSummary& adapter) {
    // A later port of the adapter reads the stamp of this very run.
    return adapter.visits.empty() ? std::nullopt : adapter.visits.front()->onCard;
}

std::optional<std::string> stampWritten(const AdapterSummary& adapter) {
    std::optional<std::string> written;
    for (const Visit* visit : adapter.visits) {
        written = visit->stamped ? visit->build : written;
    }
    return written;
}

YbOutcome ybOf(const AdapterSummary& adapter) {
    YbOutcome outcome = YbOutcome::none;
    for (const Visit* visit : adapter.visits) {
        outcome = std::max(outcome, visit->yb);
    }
    return outcome;
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

// The adapter on the bus of this row; ports without any share one that isn't there.
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
    std::vector<std::string> macs = run.before.empty() ? run.macs : std::vector<std::string>();
    for (const Port& port : run.before) {
        macs.push_back(port.mac);
    }
    std::set<std::string> told(macs.begin(), macs.end());
    for (const Visit& visit : run.visits) {
        if (told.insert(visit.mac).second) {
            macs.push_back(visit.mac);
        }
    }
    return macs;
}

AdapterSummary* adapterOf(Summary& summary, const std::string& mac) {
    for (AdapterSummary& adapter : summary.adapters) {
        for (const PortSummary& port : adapter.ports) {
            if (port.mac == mac) {
                return &adapter;
            }
        }
    }
    return nullptr;
}

void addAdapters(const Run& run, Summary& summary) {
    const Rows before = indexRows(run.before);
    const Rows after = indexRows(run.after);
    std::map<std::string, const Visit*> visits;
    for (const Visit& visit : run.visits) {
        visits[visit.mac] = &visit;
    }
    std::map<std::string, size_t> told;
    for (const std::string& mac : macsOf(run)) {
        const size_t place = told[mac]++;
        const Port* row = findRow(before, mac, place);
        placeFor(summary, row).ports.push_back({mac, row, findRow(after, mac, place), visits[mac]});
    }
    for (const Visit& visit : run.visits) {
        adapterOf(summary, visit.mac)->visits.push_back(&visit);
        if (visit.build) {
            summary.buildVersion = visit.build;
        }
    }
    for (const Flash& flash : run.flashes) {
        adapterOf(summary, flash.mac)->flashes.push_back(&flash);
    }
}

}  // namespace report
