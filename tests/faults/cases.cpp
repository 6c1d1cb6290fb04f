#include "cases.h"

#include <sys/mount.h>

#include <filesystem>

#include "log/flash_tool_code.h"

namespace faults {

namespace fs = std::filesystem;
using e2e::Json;

static const std::string countersPath = "/state/adapters.counters.json";
static const std::string overlapPath = "/state/adapters.overlap";
static const std::string utility = e2e::packageDirectory + "/lnxfwvt2";
static const std::string logParent = "/var/log";
static const char* const fillerName = "/filler";

const std::vector<Mode> modes = {
    {"default", {}, true},
    {"-s", {"-s"}, true},
    {"-f", {"-f"}, true},
    {"-s-force", {"-s", "-force"}, true},
    {"-iscsicfgupdate", {"-iscsicfgupdate"}, true, "block-not-removed"},
    {"-vtncsi", {"-vtncsi"}, true},
    // From that adapter on, every other one has its CRC checked.
    {"adapter-down", {}, true, "adapter-down", {{"/adapters/3/ports/0/driver", nullptr}}},
    {"-v", {"-v"}, false},
    {"-dir", {"-dir"}, false},
    {"-crc", {"-crc"}, false},
    {"-iscsicfgversion", {"-iscsicfgversion"}, false},
    {"-nomfw", {"-nomfw"}, false},
    {"-ncsienable", {"-ncsienable"}, false},
    {"-ncsidisable", {"-ncsidisable"}, false},
};

// Adapters that carry what the images hold, under an older stamp: no fault.
static void updateFirst(unsigned) {
    e2e::editAdapters({{"/adapters/5/components/bc", "7.12.5"},
                       {"/adapters/5/components/mfw1", "7.12.20"},
                       {"/adapters/5/components/mba", "7.12.1"},
                       {"/adapters/5/components/ncsi/version", "2.2.3"}});
}

// Full but for so many pages, none at the first place.
static void fillButFor(const std::string& directory, unsigned place) {
    e2e::fillUp(directory);
    const std::string filler = directory + fillerName;
    fs::resize_file(filler, fs::file_size(filler) - uintmax_t{place - 1} * pageSize);
}

const std::vector<Fault> allFaults = {
    {"none", Places::once, nullptr},
    {"up-to-date", Places::updates, nullptr, 0, updateFirst},
    {"exit-1", Places::commands, {{"exit", 1}}},
    {"exit-unknown", Places::commands, {{"exit", 200}}},
    {"exit-95", Places::commands, {{"exit", fwup::codeRebootRequired}}},
    {"exit-70", Places::commands, {{"exit", fwup::codeNotApplied}}},
    {"exit-35", Places::commands, {{"exit", fwup::codeNoUpdateNeeded}}},
    {"exit-0", Places::commands, {{"exit", fwup::codeSuccess}}},
    {"killed", Places::commands, {{"signal", "SIGKILL"}}},
    {"empty", Places::commands, {{"output", "empty"}}},
    {"half", Places::commands, {{"output", "half"}}},
    {"garbage", Places::commands, {{"output", "garbage"}}},
    {"gone", Places::commands, {{"remove", true}}, 0, nullptr, "lnxfwvt2|omplete the package"},
    {"absent", Places::once, nullptr, 0, [](unsigned) { fs::remove(utility); },
     "lnxfwvt2|omplete the package"},
    {"SIGHUP", Places::commands, {{"groupSignal", "SIGHUP"}}},
    {"SIGINT", Places::commands, {{"groupSignal", "SIGINT"}}},
    {"SIGTERM", Places::commands, {{"groupSignal", "SIGTERM"}}},
    {"SIGQUIT", Places::commands, {{"groupSignal", "SIGQUIT"}}},
    {"SIGPIPE", Places::commands, {{"groupSignal", "SIGPIPE"}}},
    {"call", Places::calls, {{"status", 1}}},
    {"log-missing", Places::once, nullptr, 0, [](unsigned) { fs::remove_all("/var"); }},
    {"log-refused", Places::once, nullptr, 0, [](unsigned) { e2e::makeReadOnly(logParent); }},
    {"log-a-file", Places::once, nullptr, 0,
     [](unsigned) { e2e::writeFile(e2e::logDirectory, "taken"); }},
    {"log-read-only", Places::once, nullptr, losesLog,
     [](unsigned) { e2e::makeReadOnly(e2e::logDirectory); }, "log's disk"},
    {"log-full", Places::logPages, nullptr, losesLog,
     [](unsigned place) { fillButFor(e2e::logDirectory, place); }, "log's disk"},
    {"directory-read-only", Places::once, nullptr, 0,
     [](unsigned) { e2e::makeReadOnly(e2e::packageDirectory); }, "package directory writable"},
    {"directory-full", Places::files, nullptr, 0,
     [](unsigned place) { fillButFor(e2e::packageDirectory, place); }, "package directory.*disk"},
    {"tool-killed", Places::commands, {{"groupSignal", "SIGKILL"}}, kills},
    {"tool-alone-killed",
     Places::commands,
     {{"leaderSignal", "SIGKILL"}, {"delay", 100}},
     kills | lingers},
};

bool hasTrait(const Case& c, unsigned anyOf) {
    return (c.fault->traits & anyOf) != 0;
}

std::string nameOf(const Case& c) {
    return std::string(c.mode->name) + "/" + c.fault->name + "/" + std::to_string(c.place) +
           (c.sticks ? "/again" : "");
}

// The rack's images are all newer than what its adapters carry: a stamp that was
// written before a flash failed doesn't keep a second run from flashing.
void makeMachine(const Mode& mode) {
    e2e::makePackage("rack");
    e2e::editAdapters(mode.edits);
}

static void setFaults(const Json& list) {
    e2e::editAdapters({{"/faults", list}});
}

static unsigned counter(size_t fault, const char* name) {
    return Json::parse(e2e::readFile(countersPath)).at(fault).at(name).get<unsigned>();
}

void startCounting() {
    // Faults are counted even where they are never due.
    setFaults(Json::parse(R"([{"command": {"nth": 4294967295}}, {"call": {"nth": 4294967295}}])"));
}

unsigned countOf(Places places) {
    return counter(places == Places::commands ? 0 : 1, "seen");
}

void applyFault(const Case& c) {
    if (c.fault->spoil != nullptr) {
        c.fault->spoil(c.place);
    }
    if (!c.fault->effect.is_null()) {
        Json fault = c.fault->effect;
        fault[c.fault->places == Places::calls ? "call" : "command"]["nth"] = c.place;
        fault["sticks"] = c.sticks;
        setFaults(Json::array({fault}));
    }
}

bool faultHappened(const Case& c) {
    return c.fault->effect.is_null() || counter(0, "used") == 1;
}

bool overlapped() {
    return fs::exists(overlapPath);
}

void liftFaults() {
    for (const std::string& place : {e2e::logDirectory, logParent}) {
        while (umount2(place.c_str(), MNT_DETACH) == 0) {
        }
    }
    mount("e2e", e2e::packageDirectory.c_str(), "tmpfs", MS_REMOUNT | MS_NOSUID | MS_NODEV,
          nullptr);
    fs::remove(e2e::packageDirectory + fillerName);
    if (fs::is_regular_file(e2e::logDirectory)) {
        fs::remove(e2e::logDirectory);
    }
    if (!fs::is_symlink(utility)) {
        fs::create_symlink("/build/lnxfwvt2", utility);
    }
    Json adapters = e2e::readAdapters();
    adapters.erase("faults");
    e2e::writeAdapters(adapters);
}

}  // namespace faults
