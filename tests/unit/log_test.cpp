#include "fixture.h"
#include "log/command_runner.h"
#include "log/update_log.h"

namespace fwup {

using CommandRunner = Fixture;

TEST_F(CommandRunner, ReportsTheExitCodeEvenWhenSilent) {
    const std::pair<int, const char*> rows[] = {{0, "0"}, {24320, "95"}, {255, "0"}, {-1, "0"}};
    for (const auto& row : rows) {
        restart();
        bSilent = 1;
        shellRules = {{"utility", row.first, "100%d output\n"}};
        const std::string report =
            std::string("Command \"utility >>L\" returned code: ") + row.second + "\n ";
        EXPECT_EQ(consoleOf([&] { EXPECT_EQ(SYSTEM("utility >>L"), row.first); }), report + "\n");
        EXPECT_EQ(readFile("L"), "\nAbout to execute: \"utility >>L\"\n100%d output\n" + report);
    }
}

TEST_F(CommandRunner, CutsItsOwnLinesButNeverTheCommand) {
    const std::string command(1500, 'x');
    const std::string report = ("Command \"" + command).substr(0, 1022);
    EXPECT_EQ(consoleOf([&] { SYSTEM(command.c_str()); }), report + "\n");
    EXPECT_EQ(readFile("L"), ("\nAbout to execute: \"" + command).substr(0, 1022) + report);
    EXPECT_EQ(commands, command + "|");
    // A command that is formatted must fit, or it isn't run at all.
    consoleOf([&] { EXPECT_EQ(runCommand("%.1023s", command.c_str()), 0); });
    EXPECT_EQ(convert_return_code(runCommand("%.1024s", command.c_str())), 1);
    EXPECT_EQ(commands.size(), 1501U + 1024U);
}

TEST_F(CommandRunner, LogsTextAsItStands) {
    const std::string text = "100% %s%n";
    EXPECT_EQ(consoleOf([&] { writetoLog(text.c_str(), true), writetoLog(nullptr, true); }), text);
    EXPECT_EQ(readFile("L"), text);
}

}  // namespace fwup
