#include "faults.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>

#include "text.h"

namespace emulator {

namespace {

std::string pathBeside(const Fleet& fleet, const char* newEnding) {
    const std::string ending = ".json";
    std::string path = fleet.path;
    if (path.size() > ending.size() &&
        path.compare(path.size() - ending.size(), ending.size(), ending) == 0) {
        path.resize(path.size() - ending.size());
    }
    return path + newEnding;
}

std::string countersPath(const Fleet& fleet) {
    return pathBeside(fleet, ".counters.json");
}

// One {"seen", "used"} pair for each fault, zero where nothing is known: a
// missing or unfit file just means that counting starts again.
Json loadCounters(const std::string& path, size_t faults) {
    Json counters = Json::array();
    if (access(path.c_str(), F_OK) == 0) {
        counters = Json::parse(readFile(path, exitFleet), nullptr, false);
    }
    if (!counters.is_array() || counters.size() != faults) {
        counters = Json(faults, Json{{"seen", 0}, {"used", 0}});
    }
    return counters;
}

bool concerns(const Json& criteria, const Json& event) {
    for (const auto& [key, wanted] : criteria.items()) {
        if (key != "nth" && key != "comment" &&
            !sameText(wanted.get_ref<const std::string&>(), event.value(key, std::string()))) {
            return false;
        }
    }
    return true;
}

// Counts the event and says whether the fault is due at it.
bool isDue(const Json& fault, const Json& criteria, const Json& event, Json& counter) {
    const uint32_t seen = counter.value("seen", 0U) + 1;
    counter["seen"] = seen;
    if (counter.contains("stuck")) {
        return counter["stuck"] == event;
    }
    const bool due = criteria.value("nth", seen) == seen &&
                     counter.value("used", 0U) < fault.value("times", UINT32_MAX);
    if (due && fault.value("sticks", false)) {
        counter["stuck"] = event;
    }
    return due;
}

}  // namespace

const Json* dueFault(const Fleet& fleet, const char* kind, const Json& event) {
    if (!fleet.document.contains("faults")) {
        return nullptr;
    }
    const Json& faults = fleet.document["faults"];
    const std::string path = countersPath(fleet);
    Json counters;
    const Json* due = nullptr;
    for (size_t i = 0; i < faults.size(); ++i) {
        if (!faults[i].contains(kind) || !concerns(faults[i][kind], event)) {
            continue;
        }
        if (counters.is_null()) {
            counters = loadCounters(path, faults.size());
        }
        if (isDue(faults[i], faults[i][kind], event, counters[i]) && due == nullptr) {
            due = &faults[i];
            counters[i]["used"] = counters[i].value("used", 0U) + 1;
        }
    }
    if (!counters.is_null()) {
        replaceFile(path, counters.dump() + "\n");
    }
    return due;
}

void resetCounters(const Fleet& fleet) {
    const std::string path = countersPath(fleet);
    if (unlink(path.c_str()) != 0 && errno != ENOENT) {
        throw Failure(exitFleet, path + " can't be removed: " + strerror(errno));
    }
}

void watchForAnother(const Fleet& fleet) {
    if (!fleet.document.contains("faults")) {
        return;
    }
    const int lock = open(pathBeside(fleet, ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (lock >= 0 && flock(lock, LOCK_EX | LOCK_NB) != 0) {
        replaceFile(pathBeside(fleet, ".overlap"), "Two commands worked at the same time.\n");
    }
}

// A table of its own: libc names signals only from 2.32 on, and the stand-ins
// run on older systems too.
static const struct {
    const char* name;
    int number;
} knownSignals[] = {
    {"HUP", SIGHUP},   {"INT", SIGINT},   {"QUIT", SIGQUIT}, {"ABRT", SIGABRT},
    {"BUS", SIGBUS},   {"KILL", SIGKILL}, {"SEGV", SIGSEGV}, {"PIPE", SIGPIPE},
    {"ALRM", SIGALRM}, {"TERM", SIGTERM}, {"STOP", SIGSTOP}, {"XCPU", SIGXCPU},
};

int signalNumber(const Json& value) {
    if (value.is_number_unsigned()) {
        return value.get<uint64_t>() < NSIG ? value.get<int>() : 0;
    }
    std::string name = value.is_string() ? value.get<std::string>() : std::string();
    if (name.compare(0, 3, "SIG") == 0) {
        name.erase(0, 3);
    }
    for (const auto& known : knownSignals) {
        if (name == known.name) {
            return known.number;
        }
    }
    return 0;
}

}  // namespace emulator
