#include "update/yb_repair.h"

#include "fixture.h"
#include "update/yb_text.h"

namespace fwup {

using YbRepair = Fixture;

static const std::string rightLine =
    "VPD (YB): 0x4f 0x46 0x4d 0x45 0x4e 0x41 0x2 0x8 0x0 0x0 0x0 0x0 0x0 0x0 0x0 0x7 0x0 0xf 0x0 0x1 0x0 0x1 0x0 0x7 0x0 0xf 0x0 0x2 0x0 0x2 0x0 0x6 0x0 0xf 0x0 0x1 0x0 0x3 0x0 0x6 0x0 0xf 0x0 0x2 0x0 0x4 0x0 0x6 0x0 0x9 0x0 0x1 0x0 0x5 0x0 0x6 0x0 0x9 0x0 0x2 0x0 0x6 0x0 0x6 0x0 0x9 0x0 0x1 0x0 0x7 0x0 0x6 0x0 0x9 0x0 0x2 0x0";

TEST_F(YbRepair, IsDecidedByTheFirstVpdLine) {
    const std::string wrong = rightLine.substr(0, 322) + "1\n";
    const std::string filler(998, 'x');
    const char* const right = "*** YB data is correct on M1 ***\n\n";
    const char* const done = "*** Successfully completed performing YB fix on device M1 ***\n\n";
    const char* const failed = " !!! Error performing YB fix on device M1 !!!\n\n";
    const char* const nothing =
        "YB_Data3.log \n\" returned code: 0\n \nAbout to execute: \"rm YB_Data3.log";
    const struct {
        std::string data;
        int fixStatus;
        const char* outcome;
    } rows[] = {
        {"a heading\n " + rightLine + " 0x1\nVPD\n", 0, right},
        {wrong + rightLine, 0, done},
        {wrong, 95, done},
        {wrong, -1, failed},
        {wrong, 9, failed},
        {"vpd (yb): 0x4f\n", 0, nothing},
        {"x" + filler + rightLine, 0, right},  // a read ends after 999 characters
        {filler + rightLine, 0, nothing},
    };
    char line[ybTextSize] = "";
    formatYbLine(line);
    EXPECT_EQ(line, rightLine);
    EXPECT_EQ(rightLine.size(), 323U);
    Device port = makePort();
    port.subsysId = 0x0B24;
    for (const auto& row : rows) {
        restart();
        shellRules = {{"-show", 0, row.data}, {"-vpdyb", row.fixStatus}};
        const std::string console = consoleOf([&] { repairYb(&port, "T"); });
        EXPECT_TRUE(isLogged(row.outcome)) << row.data;
        EXPECT_EQ(console.find("YB fix") != std::string::npos, row.data.find(wrong) == 0);
        EXPECT_EQ(console.find(right) != std::string::npos, row.outcome == right);
    }
}

}  // namespace fwup
