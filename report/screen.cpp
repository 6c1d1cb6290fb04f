#include "screen.h"

#include <algorithm>
#include <utility>

#include "names.h"
#include "work.h"

namespace report {

constexpr size_t screenWidth = 80;

struct Screen {
    std::string text;
    bool colour;
};

enum class Tint { good, bad, strong };

static const char* codeOf(Tint tint) {
    switch (tint) {
        case Tint::good: return "\033[32m";
        case Tint::bad: return "\033[31m";
        case Tint::strong: return "\033[1m";
    }
    return "";
}

static std::string tinted(const Screen& screen, Tint tint, const std::string& text) {
    return screen.colour ? codeOf(tint) + text + "\033[0m" : text;
}

// Breaks `text` between words; `first` stands before its first line, blanks of
// the same width before the others.
static void addWrapped(Screen& screen, const std::string& first, const std::string& text) {
    const std::string indent(first.size(), ' ');
    std::string line = first;
    bool empty = true;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find(' ', at), text.size());
        const std::string word = text.substr(at, end - at);
        if (!empty && line.size() + 1 + word.size() > screenWidth) {
            screen.text += line + "\n";
            line = indent;
            empty = true;
        }
        line += (empty ? "" : " ") + word;
        empty = false;
        at = end + 1;
    }
    screen.text += line + "\n";
}

// --- Adapters

static std::string stampOr(const std::optional<std::string>& stamp, const char* otherwise) {
    if (!stamp) {
        return otherwise;
    }
    return stamp->empty() ? "empty" : *stamp;
}

static void addPort(Screen& screen, const PortSummary& port) {
    std::string line = "    port " + port.mac;
    if (port.before->bus != -1) {
        line += " at " + std::to_string(port.before->device) + "." +
                std::to_string(port.before->function);
    }
    if (port.visit != nullptr && !isAbsent(port.visit->driver)) {
        line += ", driver " + port.visit->driver;
    }
    screen.text += line;
    if (isDown(port)) {
        screen.text += tinted(screen, Tint::bad, ", DOWN (no driver)");
    }
    if (port.visit != nullptr && port.visit->corrupted) {
        screen.text += tinted(screen, Tint::bad, ", FIRMWARE CORRUPTED");
    }
    screen.text += "\n";
}

static bool isSame(const PortSummary& a, const PortSummary& b) {
    const auto same = [](const Port* x, const Port* y) {
        return x == nullptr || y == nullptr
                   ? x == y
                   : std::equal(std::begin(x->versions), std::end(x->versions), y->versions);
    };
    return same(a.before, b.before) && same(a.after, b.after);
}

// "BOOT 7.10.4 -> 7.12.5, MFW 7.10.12, ..."; what is NA is left out.
static std::string versionsOf(const PortSummary& port, bool isUpdate) {
    std::string text;
    for (size_t i = 0; port.before != nullptr && i < versionColumns; i++) {
        const std::string& before = port.before->versions[i];
        const std::string after = port.after != nullptr ? port.after->versions[i]
                                  : isUpdate            ? "?"
                                                        : before;
        if (isAbsent(before) && (isAbsent(after) || after == "?")) {
            continue;
        }
        text += text.empty() ? "" : ", ";
        text += std::string(fwup::versionColumns[i].heading) + " " + before;
        text += before == after ? "" : " -> " + after;
    }
    return text.empty() ? "no versions" : text;
}

static void addVersions(Screen& screen, const AdapterSummary& adapter, bool isUpdate) {
    for (const PortSummary& port : adapter.ports) {
        const PortSummary& first = adapter.ports.front();
        if (port.before == nullptr || (&port != &first && isSame(port, first))) {
            continue;
        }
        const std::string label = &port == &first ? "versions" : "but " + port.mac;
        addWrapped(screen, "    " + label + ": ", versionsOf(port, isUpdate));
    }
}

// "bc, mba updated; mfw1 failed"
static std::string flashesOf(const AdapterSummary& adapter, const std::string& mac) {
    std::vector<std::pair<FlashOutcome, std::string>> groups;
    for (const Flash* flash : adapter.flashes) {
        if (flash->mac != mac) {
            continue;
        }
        const auto same = std::find_if(groups.begin(), groups.end(), [flash](const auto& group) {
            return group.first == flash->outcome;
        });
        if (same == groups.end()) {
            groups.emplace_back(flash->outcome, componentOf(*flash));
        } else {
            same->second += ", " + componentOf(*flash);
        }
    }
    std::string text;
    for (const auto& [outcome, components] : groups) {
        text += (text.empty() ? "" : "; ") + components + " " + nameOf(outcome);
    }
    return text;
}

// After a failure an adapter is flashed once more through its next port.
static void addFlashes(Screen& screen, const AdapterSummary& adapter) {
    for (const PortSummary& port : adapter.ports) {
        const std::string flashes = flashesOf(adapter, port.mac);
        if (!flashes.empty()) {
            addWrapped(screen, "    flashes through " + port.mac + ": ", flashes);
        }
    }
}

static void addWork(Screen& screen, const AdapterSummary& adapter) {
    addFlashes(screen, adapter);
    std::string checks;
    for (const Visit* visit : adapter.visits) {
        if (visit->crc != CrcOutcome::none) {
            checks += (checks.empty() ? "" : ", ") + visit->mac + " " + nameOf(visit->crc);
        }
    }
    if (!checks.empty()) {
        addWrapped(screen, "    CRC check: ", checks);
    }
    if (ybOf(adapter) != YbOutcome::none) {
        screen.text += std::string("    field YB: ") + nameOf(ybOf(adapter)) + "\n";
    }
}

// The log of a run without a table tells nothing of its ports but their MACs.
static void addBarePorts(Screen& screen, const AdapterSummary& adapter) {
    std::string macs;
    for (const PortSummary& port : adapter.ports) {
        macs += (macs.empty() ? "" : ", ") + port.mac;
    }
    screen.text += "\n";
    addWrapped(screen, "  Ports: ", macs);
}

static void addAdapter(Screen& screen, const AdapterSummary& adapter, bool isUpdate) {
    if (adapter.ports.front().before == nullptr) {
        addBarePorts(screen, adapter);
        return;
    }
    std::string title =
        adapter.bus ? "Adapter on bus " + std::to_string(*adapter.bus) : "Adapter on unknown bus";
    title += " (" + adapter.ports.front().before->label + ")";
    screen.text += "\n  " + tinted(screen, Tint::strong, title) + "\n";
    for (const PortSummary& port : adapter.ports) {
        addPort(screen, port);
    }
    addVersions(screen, adapter, isUpdate);
    if (isUpdate) {
        screen.text += "    stamp: " + stampOr(stampBefore(adapter), "unknown") + " -> " +
                       stampOr(stampWritten(adapter), "not written") + "\n";
    }
    addWork(screen, adapter);
}

static void addSwitches(Screen& screen, const Run& run) {
    if (run.switches.empty()) {
        return;
    }
    screen.text += "\n";
    for (const Switch& one : run.switches) {
        const bool bad =
            one.outcome == SwitchOutcome::failed || one.outcome == SwitchOutcome::cutOff;
        screen.text += "  " + one.mac + " " + one.firmware + " " +
                       tinted(screen, bad ? Tint::bad : Tint::good, nameOf(one.outcome)) + "\n";
    }
}

// --- Problems

// One advice stands for all lines that it is about.
static bool sharesAdvice(const Problem& a, const Problem& b) {
    return a.kind == b.kind && a.cause == b.cause && a.adapters == b.adapters && a.next == b.next;
}

static void addProblems(Screen& screen, const std::vector<Problem>& problems) {
    for (size_t i = 0; i < problems.size(); i++) {
        const Problem& problem = problems[i];
        const auto begin = problems.begin();
        const auto first = std::find_if(begin, problems.end(), [&problem](const Problem& other) {
            return sharesAdvice(problem, other);
        });
        if (first != begin + static_cast<std::ptrdiff_t>(i)) {
            continue;
        }
        screen.text += "\n";
        for (const Problem& other : problems) {
            if (sharesAdvice(problem, other)) {
                const std::string where =
                    other.line == 0 ? "  " : "  line " + std::to_string(other.line) + ": ";
                addWrapped(screen, where, other.text);
            }
        }
        addWrapped(screen, "    cause:    ", problem.cause);
        if (!problem.adapters.empty()) {
            addWrapped(screen, "    adapters: ", problem.adapters);
        }
        if (!problem.next.empty()) {
            addWrapped(screen, "    next:     ", problem.next);
        }
    }
}

// --- The whole

static std::string describe(const Run& run, const Summary& summary) {
    const bool stopped =
        summary.outcome == Outcome::rebootFirst || summary.outcome == Outcome::usageError;
    std::string text = stopped ? "run" : wordsOf(run.operation).words;
    if (summary.buildVersion) {
        text += " to " + *summary.buildVersion;
    }
    return text + (run.dryRun ? ", DRY RUN: nothing was flashed" : "");
}

static std::string verdict(const Run& run, const Summary& summary) {
    std::string text = wordsOf(summary.outcome).verdict;
    if (run.exitStatus) {
        text += " (exit status " + std::to_string(*run.exitStatus) + ")";
    }
    if (summary.rebootNeeded && summary.outcome != Outcome::rebootFirst) {
        text += ", REBOOT NEEDED";
    }
    return text;
}

std::string toScreen(const std::string& log, const Run& run, const Summary& summary, bool colour) {
    Screen screen = {"", colour};
    const Tint tint = summary.outcome == Outcome::clean ? Tint::good : Tint::bad;
    screen.text += log + ": " + describe(run, summary) + ": " +
                   tinted(screen, tint, verdict(run, summary)) + "\n";
    for (const AdapterSummary& adapter : summary.adapters) {
        addAdapter(screen, adapter, run.operation == Operation::update);
    }
    addSwitches(screen, run);
    addProblems(screen, summary.problems);
    if (!summary.remarks.empty()) {
        screen.text += "\n" + tinted(screen, Tint::strong, "To know:") + "\n";
        addProblems(screen, summary.remarks);
    }
    screen.text += "\n" + tinted(screen, Tint::strong, "Next:");
    if (summary.next.empty()) {
        screen.text += " nothing\n";
    } else {
        screen.text += "\n";
        for (size_t i = 0; i < summary.next.size(); i++) {
            addWrapped(screen, "  " + std::to_string(i + 1) + ". ", summary.next[i].text);
        }
    }
    return screen.text;
}

}  // namespace report
