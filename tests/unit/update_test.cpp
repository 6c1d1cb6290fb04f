#include "fixture.h"
#include "update/component_flash.h"
#include "update/update_pass.h"
#include "update/yb_repair.h"
#include "update/yb_text.h"

namespace fwup {

using ComponentFlash = Fixture;

// Flashes a component of a port with this inventory. Every image is there, and a backup that some
// earlier run left.
static bool flash(const std::string& inventory, const std::string& component, bool hasMgmtFw,
                  int status) {
    Fixture::restart();
    for (const std::string& image : split("bc mfw1 ipmi asf mba mbaf l2t ump ncsi imfw ib", ' ')) {
        writeFile("3C01" + image + ".bin", "");
    }
    writeFile("nv.bak", "left");
    writeFile("M1", inventory);
    shellRules = {{"upgrade", status}};
    Device port = makePort();
    port.hasMgmtFw = hasMgmtFw;
    bool updated = false;
    consoleOf([&] { updated = updateFirmware(&port, component.c_str(), "T"); });
    EXPECT_EQ(readFile("nv.bak"), "");
    return updated;
}

// Without management firmware the utility makes a backup for every flash, else for the boot code's.
TEST_F(ComponentFlash, RunsTheCommandThatComponentAndPortCallFor) {
    const char* const rows =
        "|bc|-bc 3C01bc.bin\n|mfw1|-F -mfw1 3C01mfw1.bin\n|ipmi|-ipmi 3C01ipmi.bin\n"
        "|asf|-asf 3C01asf.bin\n|mba|-mba 3C01mba.bin\n|l2t|-l2t 3C01l2t.bin\n"
        "|ump|-ump 3C01ump.bin\n|ncsi|-ncsi 3C01ncsi.bin\n|imfw|-imfw 3C01imfw.bin\n"
        "|ib|-F -ib_ipv4n6 3C01ib.bin\nFCODE|ump|-ump 3C01ump.bin\nfcode|mba|-mba 3C01mbaf.bin\n"
        "Fcode|mba|-mba 3C01mbaf.bin\nFcODE|mba|-mba 3C01mba.bin";
    for (const std::string& row : split(rows, '\n')) {
        const Texts parts = split(row, '|');
        for (const bool hasMgmtFw : {true, false}) {
            const char* const backup = hasMgmtFw && parts[1] != "bc" ? "" : " nv.bak";
            EXPECT_TRUE(flash(parts[0], parts[1], hasMgmtFw, 0));
            EXPECT_EQ(commands, "T M1 upgrade -noreset " + parts[2] + backup + " >>L|");
        }
    }
    EXPECT_FALSE(flash("", "none", true, 0));
    EXPECT_EQ(commands, "");
}

// Of a shell that dies itself, the number is all there is, and it reads as 0.
TEST_F(ComponentFlash, TakesAStatusBelow256ForSuccess) {
    EXPECT_TRUE(flash("", "ipmi", true, 9));
    EXPECT_TRUE(isLogged("*** Update successful ***\n\n"));
}

using UpdatePass = Fixture;

static const std::string all = "bc mfw1 ipmi asf mba l2t ump ncsi imfw ib efi fcode ";

static void preparePackage() {
    Fixture::restart();
    writeFile("BuildVersion.txt", "7.1a.1.1a\n");
    for (const std::string& image : split(all, ' ')) {
        writeFile("3C01" + image + ".bin", "");
    }
}

static int update(const std::vector<Device>& devices) {
    const Ports ports(devices);
    int status = 0;
    consoleOf([&] { status = updateDevices(&ports.list, "T", "II"); });
    return status;
}

// The images that were flashed, in order.
static std::string flashed() {
    std::string images;
    for (const std::string& command : split(commands, '|')) {
        const size_t image = command.find(" 3C01");
        if (image != std::string::npos) {
            images += command.substr(image + 5, command.find(".bin") - image - 5) + " ";
        }
    }
    return images;
}

TEST_F(UpdatePass, FlashesThePresentComponentsInOrder) {
    const struct {
        std::string present;
        uint8_t vtNcsi;
        const char* images;
    } rows[] = {
        {all, 0, "bc mfw1 ipmi asf mba l2t ump ncsi imfw ib "},
        {all, 1, "bc mfw1 ipmi asf mba l2t ump ncsi ncsi ib "},
        {"mfw1 imfw ", 1, "mfw1 ncsi "},
    };
    for (const auto& row : rows) {
        preparePackage();
        bool_vt_ncsi = row.vtNcsi;
        EXPECT_EQ(update({makePort(row.present)}), 0);
        EXPECT_EQ(flashed(), row.images);
    }
}

// Each check after a failure makes a list of its own, of one port. Without the list the pass ends
// there; without the port it goes on.
TEST_F(UpdatePass, FailedAllocationOfTheCheckIsReported) {
    const struct {
        int failing;
        const char* images;
        const char* logged;
        const char* firstStamp;
    } rows[] = {
        {1, "bc ", "Error! Unable to build II device list.\n", "saved"},
        {2, "bc bc ",
         "device M1.\n\nNow starting a CRC check for each Kelvane Ethernet adapter.\n\nCRC check complete.\n",
         ""},
    };
    for (const auto& row : rows) {
        preparePackage();
        shellRules = {{"M1 upgrade", 256}, {"M1 cfg -show", 0, "saved"}};
        failingAllocation = row.failing;
        EXPECT_EQ(update({makePort("bc "), makePort("bc ", 2, 6)}), 1);
        EXPECT_EQ(flashed(), row.images);
        EXPECT_TRUE(isLogged(row.logged));
        EXPECT_EQ(readFile("M1_VPD_V0_Data1.log"), row.firstStamp);
    }
}

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
