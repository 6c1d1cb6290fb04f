#include <climits>

#include "fixture.h"
#include "version/build_stamp.h"
#include "version/stamp_line.h"
#include "version/version_string.h"

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

static const std::string fillsUp = "7.12b.4" + std::string(53, 'x');  // 60 of 63 characters

TEST(VersionString, IsReadWhenItFitsTheGrammar) {
    const struct {
        std::string text;
        _build_version_t fields;
    } rows[] = {
        {"7.12b.4.3a", {7, 12, 'b', 4, 3, 'a'}},
        {"007.12B.4.3Z", {7, 12, 'b', 4, 3, 'z'}},
        {"..7..12b.4.3a.", {7, 12, 'b', 4, 3, 'a'}},
        {"7.12b.x.3a", {7, 12, 'b', 0, 3, 'a'}},
        {"7.12b. -9\xe9.3a", {7, 12, 'b', -9, 3, 'a'}},
        {"99999999999.2147483648b.-99999999999.3a", {INT_MAX, INT_MAX, 'b', INT_MIN, 3, 'a'}},
        {fillsUp + ".3a and more", {7, 12, 'b', 4, 3, 'a'}},
    };
    _build_version_t out = {};
    for (const auto& row : rows) {
        EXPECT_EQ(isVersionString(row.text.c_str(), &out), 1) << row.text;
        EXPECT_EQ(cmp_versions(&out, &row.fields), 0) << row.text;
    }
    const std::string others =
        "|.|7.12b.4|7.12b.4.3|7.12.4.3a|7.12bb.4.3a|7.12{.4.3a|7.b.4.3a|7.12b.4.3a.1| 7.12b.4.3a|7.12b.4.3a\n"
        "|-7.12b.4.3a|7.1 b.4.3a|7.12\xe9.4.3a|7.\xb2z.4.3a|7.12b.4.3a\x80|" +
        fillsUp + "x.3a";
    for (const std::string& text : split(others, '|')) {
        EXPECT_EQ(isVersionString(text.c_str(), &out), 0) << text;
    }
    EXPECT_EQ(isVersionString(nullptr, &out) + isVersionString("7.12b.4.3a", nullptr), 0);
    EXPECT_EQ(cmp_versions(&out, nullptr) + cmp_versions(nullptr, &out), -4);
}

TEST(VersionString, OlderAndUnreadableStampsForceAnUpdate) {
    const char* const older =
        "7.12b.4.3a<7.12b.4.3b|7.12b.4.4z<7.12b.4.12a|7.12b.-1.9z<7.12b.0.1a|7.12a.9.9z<7.12b.1.1a|"
        "7.4z.9.9z<7.12a.1.1a|6.99z.9.9z<7.1a.1.1a";
    for (const std::string& row : split(older, '|')) {
        const Texts pair = split(row, '<');
        EXPECT_EQ(need_to_force_update(pair[0].c_str(), pair[1].c_str()), 1) << row;
        EXPECT_EQ(need_to_force_update(pair[1].c_str(), pair[0].c_str()), 0) << row;
    }
    EXPECT_EQ(need_to_force_update("7.12b.4.3a", "7.12B.4.3A"), 0);
    for (const char* unreadable : {"2.3.4a", "", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(need_to_force_update(unreadable, "7.12b.4.3a"), 1);
        EXPECT_EQ(need_to_force_update("7.12b.4.3a", unreadable), 1);
    }
}

}  // namespace fwup
