#include "command.h"

#include "component.h"
#include "exit_code.h"

namespace emulator {

const char usageText[] =
    "usage: lnxfwvt2                          list the adapters, then ask\n"
    "       lnxfwvt2 MAC dir                  list the firmware in the adapter\n"
    "       lnxfwvt2 MAC dir -delete NAME     delete isb_cfg or isb_cfg2\n"
    "       lnxfwvt2 MAC upgrade [-noreset] [-F] -COMPONENT IMAGE [BACKUP]\n"
    "       lnxfwvt2 MAC cfg -show vpdv0|vpdyb\n"
    "       lnxfwvt2 MAC cfg [-noreset] -vpdv0|-vpdyb VALUE\n"
    "       lnxfwvt2 MAC cfg [-noreset] -ipmi|-ump|-mgmt 0|1\n"
    "       lnxfwvt2 MAC crc                  check the firmware, after asking\n"
    "       lnxfwvt2 --reset-counters         start counting for faults again\n";

namespace {

using Words = std::vector<std::string>;

[[noreturn]] void refuse(const std::string& why) {
    throw Failure(exitUsage, why);
}

// Removes every `option` from the words; true when it was there.
bool takeOption(Words& words, const std::string& option) {
    bool found = false;
    for (size_t i = 0; i < words.size();) {
        if (words[i] == option) {
            words.erase(words.begin() + static_cast<Words::difference_type>(i));
            found = true;
        } else {
            ++i;
        }
    }
    return found;
}

void parseDir(Words& words, Command& command) {
    command.verb = "dir";
    if (words.empty()) {
        return;
    }
    if (words.size() != 2 || words[0] != "-delete") {
        refuse("\"dir\" takes nothing, or -delete and a name");
    }
    command.verb = "delete";
    command.component = words[1];
}

void parseUpgrade(Words& words, Command& command) {
    command.verb = "upgrade";
    command.force = takeOption(words, "-F");
    takeOption(words, "-noreset");
    if (words.size() < 2 || words.size() > 3 || words[0][0] != '-') {
        refuse("\"upgrade\" takes a component's option, an image and perhaps a backup file");
    }
    const ImageKind* kind = imageForOption(words[0].substr(1));
    if (kind == nullptr) {
        refuse("unknown component option " + words[0]);
    }
    command.component = kind->name;
    command.image = words[1];
    command.backup = words.size() == 3 ? words[2] : "";
}

void parseCfg(Words& words, Command& command) {
    takeOption(words, "-noreset");
    command.verb = takeOption(words, "-show") ? "show" : "set";
    if (words.empty()) {
        refuse("\"cfg\" needs a field");
    }
    const bool dashed = words[0].compare(0, 1, "-") == 0;
    command.component = dashed ? words[0].substr(1) : words[0];
    const bool vpd = command.component == "vpdv0" || command.component == "vpdyb";
    const bool known =
        vpd || (command.verb == "set" && componentSwitchedBy(command.component) != nullptr);
    if (!known || dashed != (command.verb == "set")) {
        refuse("unknown field " + words[0]);
    }
    const size_t values = command.verb == "set" ? 1 : 0;
    if (words.size() != 1 + values) {
        refuse("\"cfg\" needs " + std::string(values == 1 ? "one value" : "no value") + " for " +
               words[0]);
    }
    command.value = values == 1 ? words[1] : "";
    if (values == 1 && !vpd && command.value != "0" && command.value != "1") {
        refuse(words[0] + " takes 0 or 1");
    }
}

void parseCrc(Words& words, Command& command) {
    command.verb = "crc";
    if (!words.empty()) {
        refuse("\"crc\" takes nothing");
    }
}

const struct {
    const char* name;
    void (*parse)(Words&, Command&);
} portVerbs[] = {
    {"dir", parseDir}, {"upgrade", parseUpgrade}, {"cfg", parseCfg}, {"crc", parseCrc}};

void parsePortCommand(const Words& words, Command& command) {
    if (words.size() < 2) {
        refuse("what to do with " + words[0] + "?");
    }
    command.mac = words[0];
    for (const auto& verb : portVerbs) {
        if (words[1] == verb.name) {
            Words rest(words.begin() + 2, words.end());
            verb.parse(rest, command);
            return;
        }
    }
    refuse("unknown verb " + words[1]);
}

}  // namespace

Command parseCommand(const Words& arguments) {
    Command command;
    if (arguments.empty()) {
        command.verb = "list";
    } else {
        parsePortCommand(arguments, command);
    }
    return command;
}

}  // namespace emulator
