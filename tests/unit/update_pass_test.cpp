#include "update/update_pass.h"

#include "fixture.h"

namespace fwup {

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

}  // namespace fwup
