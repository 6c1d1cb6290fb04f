#include "screen.h"

#include <algorithm>
#include <utility>

#include "names.h"

namespace report {

constexpr size_t screenWidth = 80;

struct Screen {
    std::string text;
    bool colour;
};

enum class Tint { plain, good, bad, strong };

// --- Text that may be shown

// The length of the UTF-8 character at `at` that may be printed; 0 when there is none.
static size_t printableAt(const std::string& text, size_t at) {
    const auto byte = [&text](size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const unsigned first = byte(at);
    if (first < 0x80) {
        return first >= ' ' && first != 0x7F ? 1 : 0;
    }
    const size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4) {
        return 0;
    }
    for (size_t i = 1; i < length; i++) {
        if ((byte(at + i) & 0xC0) != 0x80) {
            return 0;
        }
    }
    const unsigned second = byte(at + 1);
    const bool control = first == 0xC2 && second < 0xA0;
    const bool overlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
    const bool outside = (first == 0xED && second >= 0xA0) || (first == 0xF4 && second >= 0x90);
    // Marks that turn the direction of writing could show a text as another one.
    const bool direction = first == 0xE2 && (second == 0x80 || second == 0x81);
    return control || overlong || outside || direction ? 0 : length;
}

static std::string shown(const std::string& text) {
    std::string result;
    for (size_t at = 0; at < text.size();) {
        const size_t length = printableAt(text, at);
        if (length == 0) {
            result += text[at] == '\t' ? ' ' : '?';
            at++;
        } else {
            result.append(text, at, length);
            at += length;
        }
    }
    return result;
}

static std::string tinted(const Screen& screen, Tint tint, const std::string& text) {
    static const char* const codes[] = {"", "\033[32m", "\033[31m", "\033[1m"};
    if (!screen.colour || tint == Tint::plain) {
        return text;
    }
    return codes[static_cast<size_t>(tint)] + text + "\033[0m";
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
    return stamp->empty() ? "empty" : shown(*stamp);
}

static void addPort(Screen& screen, const PortSummary& port) {
    std::string line = "    port " + shown(port.mac);
    if (port.device && port.function) {
        line += " at " + std::to_string(*port.device) + "." + std::to_string(*port.function);
    }
    if (port.driver) {
        line += ", driver " + shown(*port.driver);
    }
    screen.text += line;
    if (port.down) {
        screen.text += tinted(screen, Tint::bad, ", DOWN (no driver)");
    }
    if (port.corrupted) {
        screen.text += tinted(screen, Tint::bad, ", FIRMWARE CORRUPTED");
    }
    screen.text += "\n";
}

static std::string upperCase(const char* name) {
    std::string text(name);
    for (char& c : text) {
        c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
    }
    return text;
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
        if (before == "NA" && (after == "NA" || after == "?")) {
            continue;
        }
        text += text.empty() ? "" : ", ";
        text += upperCase(columnNames[i]) + " " + shown(before);
        text += before == after ? "" : " -> " + shown(after);
    }
    return text.empty() ? "no versions" : text;
}

static void addVersions(Screen& screen, const AdapterSummary& adapter, bool isUpdate) {
    for (const PortSummary& port : adapter.ports) {
        const PortSummary& first = adapter.ports.front();
        if (port.before == nullptr || (&port != &first && isSame(port, first))) {
            continue;
        }
        const std::string label = &port == &first ? "versions" : "but " + shown(port.mac);
        addWrapped(screen, "    " + label + ": ", versionsOf(port, isUpdate));
    }
}

static std::string flashesOf(const AdapterSummary& adapter, const std::string& mac) {
    std::string text;
    for (size_t outcome = 0; outcome <= static_cast<size_t>(FlashOutcome::heldBack); outcome++) {
        std::string components;
        for (const Flash* flash : adapter.flashes) {
            if (static_cast<size_t>(flash->outcome) == outcome && flash->mac == mac) {
                components += (components.empty() ? "" : ", ") + shown(flash->component);
            }
        }
        if (!components.empty()) {
            text += (text.empty() ? "" : "; ") + components + " " +
                    nameOf(static_cast<FlashOutcome>(outcome));
        }
    }
    return text;
}

// After a failure an adapter is flashed once more through its next port.
static void addFlashes(Screen& screen, const AdapterSummary& adapter) {
    for (const PortSummary& port : adapter.ports) {
        const std::string flashes = flashesOf(adapter, port.mac);
        if (!flashes.empty()) {
            addWrapped(screen, "    flashes through " + shown(port.mac) + ": ", flashes);
        }
    }
}

static void addWork(Screen& screen, const AdapterSummary& adapter) {
    addFlashes(screen, adapter);
    if (!adapter.checks.empty()) {
        std::string checks;
        for (const Visit* visit : adapter.checks) {
            checks += (checks.empty() ? "" : ", ") + shown(visit->mac) + " " + nameOf(visit->crc);
        }
        addWrapped(screen, "    CRC check: ", checks);
    }
    if (adapter.yb != YbOutcome::none) {
        screen.text += std::string("    field YB: ") + nameOf(adapter.yb) + "\n";
    }
}

// The log of a run without a table tells nothing of its ports but their MACs.
static void addBarePorts(Screen& screen, const AdapterSummary& adapter) {
    std::string macs;
    for (const PortSummary& port : adapter.ports) {
        macs += (macs.empty() ? "" : ", ") + shown(port.mac);
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
    const PortSummary& first = adapter.ports.front();
    if (first.label) {
        title += " (" + shown(*first.label) + ")";
    }
    screen.text += "\n  " + tinted(screen, Tint::strong, title) + "\n";
    for (const PortSummary& port : adapter.ports) {
        addPort(screen, port);
    }
    addVersions(screen, adapter, isUpdate);
    if (isUpdate) {
        screen.text += "    stamp: " + stampOr(adapter.stampBefore, "unknown") + " -> " +
                       stampOr(adapter.stampWritten, "not written") + "\n";
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
        screen.text += "  " + shown(one.mac) + " " + shown(one.firmware) + " " +
                       tinted(screen, bad ? Tint::bad : Tint::good, nameOf(one.outcome)) + "\n";
    }
}

// --- Problems

// One advice stands for all lines that it is about.
static void addProblems(Screen& screen, const Summary& summary) {
    std::vector<std::string> told;
    for (const Problem& problem : summary.problems) {
        if (std::find(told.begin(), told.end(), problem.kind) != told.end()) {
            continue;
        }
        told.push_back(problem.kind);
        screen.text += "\n";
        for (const Problem& other : summary.problems) {
            if (other.kind == problem.kind) {
                const std::string where =
                    other.line == 0 ? "  " : "  line " + std::to_string(other.line) + ": ";
                addWrapped(screen, where, shown(other.text));
            }
        }
        addWrapped(screen, "    cause:    ", problem.cause);
        if (!problem.adapters.empty()) {
            addWrapped(screen, "    adapters: ", shown(problem.adapters));
        }
        if (!problem.next.empty()) {
            addWrapped(screen, "    next:     ", problem.next);
        }
    }
}

// --- The whole

static std::string describe(const Run& run, const Summary& summary) {
    static const char* const operations[] = {"no operation that left a trace",
                                             "update",
                                             "installed versions",
                                             "firmware directories",
                                             "iSCSI configuration versions",
                                             "management firmware off",
                                             "NCSI on",
                                             "NCSI off"};
    const bool stopped =
        summary.outcome == Outcome::rebootFirst || summary.outcome == Outcome::usageError;
    std::string text = stopped ? "run" : operations[static_cast<size_t>(run.operation)];
    if (summary.buildVersion) {
        text += " to " + shown(*summary.buildVersion);
    }
    return text + (summary.dryRun ? ", DRY RUN: nothing was flashed" : "");
}

static std::string verdict(const Run& run, const Summary& summary) {
    static const char* const verdicts[] = {"all well",         "FAILED",       "AN ADAPTER IS DOWN",
                                           "NO ADAPTER FOUND", "REBOOT FIRST", "USAGE ERROR",
                                           "CUT OFF"};
    std::string text = verdicts[static_cast<size_t>(summary.outcome)];
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
    screen.text += shown(log) + ": " + describe(run, summary) + ": " +
                   tinted(screen, tint, verdict(run, summary)) + "\n";
    for (const AdapterSummary& adapter : summary.adapters) {
        addAdapter(screen, adapter, run.operation == Operation::update);
    }
    addSwitches(screen, run);
    addProblems(screen, summary);
    screen.text += "\n" + tinted(screen, Tint::strong, "Next:");
    if (summary.next.empty()) {
        screen.text += " nothing\n";
    } else {
        screen.text += "\n";
        for (size_t i = 0; i < summary.next.size(); i++) {
            addWrapped(screen, "  " + std::to_string(i + 1) + ". ", shown(summary.next[i].text));
        }
    }
    return screen.text;
}

}  // namespace report
