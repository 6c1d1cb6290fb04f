#include "reader_state.h"

#include <utility>

namespace report {

// A closing line that comes again after so many later quotes is not looked for.
constexpr size_t checkpointLimit = 1024;

// --- Going back

static Checkpoint remember(const LogReader& reader, std::string key) {
    const Run& run = reader.run;
    Checkpoint checkpoint;
    checkpoint.key = std::move(key);
    checkpoint.position = reader.at;
    checkpoint.macs = run.macs.size();
    checkpoint.listings = run.listings.size();
    checkpoint.directories = run.directories.size();
    checkpoint.before = run.before.size();
    checkpoint.after = run.after.size();
    checkpoint.visits = run.visits.size();
    checkpoint.flashes = run.flashes.size();
    checkpoint.switches = run.switches.size();
    checkpoint.findings = run.findings.size();
    checkpoint.hasAfter = run.hasAfter;
    if (!run.visits.empty()) {
        checkpoint.visit = run.visits.back();
    }
    if (!run.flashes.empty()) {
        checkpoint.flash = run.flashes.back();
    }
    if (!run.switches.empty()) {
        checkpoint.lastSwitch = run.switches.back();
    }
    return checkpoint;
}

void beginQuote(LogReader& reader, Quote quote, std::string key) {
    reader.at.quote = quote;
    reader.at.quotedText = false;
    reader.checkpoints.push_back(remember(reader, std::move(key)));
    if (reader.checkpoints.size() > checkpointLimit) {
        reader.checkpoints.pop_front();
    }
}

template <typename Record>
static void cutBack(std::vector<Record>& records, size_t count, const std::optional<Record>& last) {
    records.erase(records.begin() + static_cast<std::ptrdiff_t>(count), records.end());
    if (last) {
        records.back() = *last;
    }
}

static void goBack(LogReader& reader, const Checkpoint& to) {
    Run& run = reader.run;
    reader.at = to.position;
    run.macs.resize(to.macs);
    run.listings.resize(to.listings);
    run.directories.resize(to.directories);
    run.before.resize(to.before);
    run.after.resize(to.after);
    run.hasAfter = to.hasAfter;
    run.findings.resize(to.findings);
    cutBack(run.visits, to.visits, to.visit);
    cutBack(run.flashes, to.flashes, to.flash);
    cutBack(run.switches, to.switches, to.lastSwitch);
    if (reader.known.size() > to.macs) {
        reader.known = {run.macs.begin(), run.macs.end()};
    }
    while (&reader.checkpoints.back() != &to) {
        reader.checkpoints.pop_back();
    }
}

Checkpoint* findCheckpoint(LogReader& reader, std::string_view key) {
    for (size_t i = reader.checkpoints.size(); i > 0; i--) {
        if (reader.checkpoints[i - 1].key == key) {
            return &reader.checkpoints[i - 1];
        }
    }
    return nullptr;
}

bool reopen(LogReader& reader, std::string_view key) {
    const Checkpoint* checkpoint = findCheckpoint(reader, key);
    if (checkpoint == nullptr) {
        return false;
    }
    goBack(reader, *checkpoint);
    return true;
}

// --- Records

void addPort(LogReader& reader, std::string_view mac) {
    reader.run.macs.emplace_back(mac);
    reader.known.emplace(mac);
}

bool isKnown(const LogReader& reader, std::string_view mac) {
    return reader.known.find(mac) != reader.known.end();
}

Visit* visitOf(LogReader& reader, std::string_view mac) {
    std::vector<Visit>& visits = reader.run.visits;
    return !visits.empty() && visits.back().mac == mac ? &visits.back() : nullptr;
}

Flash* lastFlash(LogReader& reader) {
    return reader.run.flashes.empty() ? nullptr : &reader.run.flashes.back();
}

void addFinding(LogReader& reader, LineKind kind, std::string_view text, std::string_view mac,
                std::string_view component) {
    reader.run.findings.push_back({kind, reader.number, std::string(trimmed(text)),
                                   std::string(mac), std::string(component), reader.at.passOver});
}

}  // namespace report
