#include "version/build_stamp.h"

#include "fixture.h"
#include "version/stamp_line.h"

namespace fwup {

using BuildStamp = Fixture;

TEST(StampLine, HoldsItsValueBetweenTheFirstTwoColons) {
    const std::string rows[][2] = {
        {"VPD (V0): 7.12b.4.3a\r\n", "7.12b.4.3a"},
        {"::VPD (V0)::: \t 7 1 \t: 8\n", "7 1"},
        {"VPD (V0): \n", ""},
        {"VPD (V0):", "none"},
        {"VPD (V0): " + std::string(53, '1') + "22\n", std::string(53, '1')},
        {std::string(60, ' ') + "VPD (V0): 7.1\n", "none"},
    };
    for (const auto& row : rows) {
        char value[stampValueSize] = "none";
        EXPECT_EQ(readStampValue(row[0].c_str(), value), row[1] != "none") << row[0];
        EXPECT_EQ(value, row[1]);
    }
}

TEST_F(BuildStamp, BuildVersionIsTheFirstLineUpTo48Characters) {
    const std::string longest(48, '7');
    const std::string rows[][2] = {{"7.12b\n8", "7.12b"},
                                   {"7.1", "7.1"},
                                   {"\n7.1", ""},
                                   {"7", "7"},
                                   {"", ""},
                                   {longest + "8901\n", longest},
                                   {longest + "\n", longest}};
    for (const auto& row : rows) {
        writeFile("BuildVersion.txt", row[0]);
        EXPECT_EQ(getBuildVer(), row[1]);
    }
    restart();
    EXPECT_EQ(getBuildVer(), nullptr);
}

TEST_F(BuildStamp, SavedStampIsComparedWithTheBuild) {
    const std::string stamp = "VPD (V0): 7.12b.4.3a\n";
    // The saved file, the build version, and what the comparison says of them.
    const std::string rows[][3] = {
        {"VPD V0\n" + stamp + "VPD (V0): 9.1a.1.1a\n", "8",
         "\"7.12b.4.3a\" (on card) with \"8\" (current build) need_to_force_update=1\n"},
        {"VPD (V0):  \n", "none",
         "\"\" (on card) with \"\" (current build) need_to_force_update=1\n"},
        {std::string(260, 'x') + stamp, "7.12b.4.3a",
         "\"7.12b.4.3a\" (on card) with \"7.12b.4.3a\" (current build) need_to_force_update=0\n"},
        {std::string(250, 'x') + stamp, "8", ""},  // cut after 253 characters
        {"VPD (V0):", "8", ""},
        {"VPD (V0): \n", "7.12b.4.3a",
         "\"\" (on card) with \"7.12b.4.3a\" (current build) need_to_force_update=1\n"},
        {"vpd (v0): 7.1\n", "8", ""},
    };
    const Device port = makePort();
    int force = -1;
    const auto compare = [&] { force = isDeviceToBeUpdatedForVPDV0Comparison(&port, "T"); };
    for (const auto& row : rows) {
        restart();
        writeFile("M1_VPD_V0_Data1.log", row[0]);
        writeFile(row[1] == "none" ? "other" : "BuildVersion.txt", row[1]);
        consoleOf(compare);
        EXPECT_EQ(readFile("L"), row[2].empty() ? "" : "Comparing " + row[2]);
        EXPECT_EQ(force == 1, row[2].find("update=1") != std::string::npos);
    }
    // A shell that a signal killed has an exit code of 0 all the same; its raw status counts.
    shellRules = {{"cfg", 9}};
    consoleOf([&] {
        EXPECT_EQ(memorizeVPDVOForAdapter(&port, "T"), 1);
        writeVPDV0ForAdapter(&port, "T", "7");
    });
    EXPECT_TRUE(isLogged("Error performing vpd-v0 update"));
}

}  // namespace fwup
