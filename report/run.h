// What one run did, as its log tells it: plain records, in the order of the
// log. Only what is reported is kept.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "advice.h"
#include "inventory.h"
#include "inventory/component_table.h"

namespace report {

enum class FlashOutcome {
    cutOff,  // also until another is known
    updated,
    rebootNeeded,
    notNeeded,
    refused,  // which the tool takes for "no update needed"
    failed,
    imageMissing,
    heldBack,
};

struct Flash {
    std::string mac;
    std::string image;
    const fwup::Component* component = nullptr;  // null for an image of none
    bool forced = false;                         // the command carried the switch
    int stampForces = -1;                        // what the comparison said; -1 when there was none
    std::optional<int> exitCode;
    FlashOutcome outcome = FlashOutcome::cutOff;
    size_t line = 0;
};

enum class CrcOutcome { none, passed, failed, down };
enum class YbOutcome { none, right, repaired, failed };

// One port's turn in the update pass.
struct Visit {
    std::string mac;
    std::string driver;
    size_t line = 0;
    bool stampRead = false;             // the build version was there
    std::optional<int> subsystem;       // PCI subsystem ID, where a stamp was read
    std::optional<std::string> onCard;  // the stamp before this turn
    std::optional<std::string> build;   // what was to be stamped
    bool stamped = false;
    bool down = false;
    bool corrupted = false;
    CrcOutcome crc = CrcOutcome::none;
    size_t ybLine = 0;  // where the field YB was asked for; 0 where it wasn't
    YbOutcome yb = YbOutcome::none;
};

// The removal of a block with an iSCSI configuration.
struct Removal {
    std::string mac;
    const fwup::IscsiBlock* block = nullptr;
    bool done = false;
};

enum class SwitchOutcome { cutOff, done, rebootNeeded, failed };

struct Switch {
    std::string mac;
    std::string firmware;
    SwitchOutcome outcome = SwitchOutcome::cutOff;
    size_t line = 0;
};

constexpr size_t versionColumns = fwup::versionColumnCount;

// A row of the version table.
struct Port {
    std::string mac;
    std::string label;
    int bus = -1;
    int device = 0;
    int function = 0;
    std::string versions[versionColumns];
};

// Trouble that a line, or what lacks, tells of.
struct Finding {
    Advice advice;
    size_t line = 0;  // 0 when no single line shows it
    std::string text;
    std::string mac;        // empty when it is about no single port
    std::string component;  // empty when it is about none
    bool late = false;      // after an update, while its second table was made
};

enum class Operation {
    none,
    update,
    versions,
    directory,
    iscsiVersions,
    disableManagement,
    enableNcsi,
    disableNcsi,
};

struct Run {
    std::string version;  // the tool's; empty when the log doesn't tell
    Operation operation = Operation::none;
    bool mayDisableAll = false;  // no line has told disableNcsi from disableManagement
    std::optional<int> exitStatus;
    bool cutOff = false;
    bool headingAlone = false;
    bool usageError = false;
    bool rebootFirst = false;
    bool dryRun = false;
    bool doubtful = false;
    bool passOver = false;  // every port has had its turn
    std::string cutIn;      // the command during which the log ends; may be empty
    size_t lines = 0;
    std::vector<std::string> macs;    // the listed ports, in order
    std::vector<std::string> unread;  // the ports whose directory could not be read
    std::vector<Listing> listings;
    std::vector<Directory> directories;  // in the order of the log; a port may have several
    std::vector<Port> before;
    std::vector<Port> after;
    bool hasAfter = false;
    std::vector<Visit> visits;
    std::vector<Flash> flashes;
    std::vector<Removal> removals;
    std::vector<Switch> switches;
    std::vector<Finding> findings;
};

}  // namespace report
