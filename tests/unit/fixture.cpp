#include "fixture.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

#include "inventory/check_list.h"
#include "log/update_log.h"
#include "update/update_pass.h"

namespace fwup {

namespace fs = std::filesystem;

std::vector<ShellRule> shellRules;
std::string commands;
int failingAllocation = 0;

Fixture::Fixture() {
    std::string name = "unit-XXXXXX";
    fs::current_path(mkdtemp(name.data()));
    restart();
}

Fixture::~Fixture() {
    const fs::path directory = fs::current_path();
    fs::current_path(directory.parent_path());
    fs::remove_all(directory);
}

void Fixture::restart() {
    for (const fs::directory_entry& entry : fs::directory_iterator(".")) {
        fs::remove_all(entry.path());
    }
    shellRules.clear();
    commands.clear();
    failingAllocation = 0;
    bSilent = bool_vt_ncsi = 0;
    snprintf(szFwuplog, sizeof szFwuplog, "L");
    resetCheckList();
}

void writeFile(const std::string& name, const std::string& text) {
    std::ofstream(name) << text;
}

std::string readFile(const std::string& name) {
    std::ostringstream text;
    text << std::ifstream(name).rdbuf();
    return text.str();
}

bool isLogged(const std::string& text) {
    return readFile("L").find(text) != std::string::npos;
}

Texts split(const std::string& text, char separator) {
    std::istringstream rest(text);
    Texts parts;
    for (std::string part; std::getline(rest, part, separator);) {
        parts.push_back(part);
    }
    return parts;
}

Device makePort(const std::string& present, int number, int bus) {
    Device port = {};
    for (const Component& component : components) {
        const bool has = present.find(std::string(component.name) + " ") != std::string::npos;
        setVersion(port.*component.version, has ? "1.0" : "NA");
    }
    snprintf(port.didStr, sizeof port.didStr, "3C01");
    snprintf(port.mac, sizeof port.mac, "M%d", number);
    setVersion(port.driverVer, "3.1");
    port.hasMgmtFw = 1;
    port.pciBus = bus;
    return port;
}

Ports::Ports(std::vector<Device> made) : devices(std::move(made)) {
    for (Device& device : devices) {
        (list.head == nullptr ? list.head : list.tail->next) = &device;
        list.tail = &device;
    }
}

}  // namespace fwup

// The linker sends every call of these from the tool and the tests here.
extern "C" {

void* __real_calloc(size_t count, size_t size);

void* __wrap_calloc(size_t count, size_t size) {
    const bool fails = fwup::failingAllocation > 0 && --fwup::failingAllocation == 0;
    // What is too much is refused here, so that a sanitizer need not judge it.
    return fails || count > (256U << 20U) / size ? nullptr : __real_calloc(count, size);
}

int __wrap_system(const char* text) {
    const std::string command = text;
    if (command.rfind("rm ", 0) == 0) {
        return fwup::fs::remove(command.substr(3)) ? 0 : 256;
    }
    fwup::commands += command + "|";
    for (const fwup::ShellRule& rule : fwup::shellRules) {
        if (command.find(rule.needle) != std::string::npos) {
            std::string file;
            std::istringstream(command.substr(command.rfind('>') + 1)) >> file;
            std::ofstream(file, std::ios::app) << rule.output;
            return rule.status;
        }
    }
    return 0;
}

}  // extern "C"
