// The ground the unit tests stand on: a directory of their own, a shell that
// only plays its part, memory that can be made to run out, and hand-made ports.
//
// Short names keep the expected texts readable: the utility is T, the log is L
// and the ports are M1, M2 and so on.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "inventory/component_table.h"
#include "inventory/device_list.h"

namespace fwup {

using Texts = std::vector<std::string>;

// What the shell answers to every command that contains `needle`.
struct ShellRule {
    std::string needle;
    int status = 0;
    std::string output = {};  // is added to the file that the command names last
};
extern std::vector<ShellRule> shellRules;  // the first that fits counts; without one, status 0
extern std::string commands;               // what was run but "rm", each with a "|" behind

// Which allocation from now on fails: 1 is the next one, 0 none.
extern int failingAllocation;

// Runs each test in a directory of its own, with every global as a run finds it.
class Fixture : public testing::Test {
  public:
    // For the next row of a table: an empty directory, nothing run, set or scripted.
    static void restart();

  protected:
    Fixture();
    ~Fixture() override;
};

void writeFile(const std::string& name, const std::string& text);
std::string readFile(const std::string& name);
bool isLogged(const std::string& text);

template <typename Call>
std::string consoleOf(Call call) {
    testing::internal::CaptureStdout();
    call();
    return testing::internal::GetCapturedStdout();
}

// The parts of a text between separators.
Texts split(const std::string& text, char separator);

// A port M<number> with driver and management firmware, and with the components in `present`,
// each with a blank behind.
Device makePort(const std::string& present = "", int number = 1, int bus = 5);

// Ports as one list, in the order they are given.
struct Ports {
    explicit Ports(std::vector<Device> made);
    std::vector<Device> devices;
    DeviceHeadTail list = {};
};

}  // namespace fwup
