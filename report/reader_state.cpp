#include "reader_state.h"

#include "text.h"

namespace report {

void beginQuote(LogReader& reader, Quote quote) {
    reader.quote = quote;
    reader.quotedText = false;
    reader.lastQuoted.clear();
}

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

void addFinding(LogReader& reader, const Advice& advice, std::string_view text,
                std::string_view mac, std::string_view component) {
    reader.run.findings.push_back({advice, reader.number, std::string(trimmed(text)),
                                   std::string(mac), std::string(component), reader.passOver});
}

void doubt(LogReader& reader, std::string_view line) {
    Advice advice = adviceFor(Matter::doubtful);
    if (!reader.run.visits.empty()) {
        advice.actions = actForce;
    }
    if (!reader.run.doubtful) {
        addFinding(reader, advice, line);
    }
    reader.run.doubtful = true;
}

}  // namespace report
