#include "update/update_pass.h"

#include <filesystem>

#include "inventory/check_list.h"
#include "sandbox.h"

namespace fwup {

using UpdatePass = Sandbox;

static const std::string all = "bc mfw1 ipmi asf mba l2t ump ncsi imfw ib efi fcode ";

static void preparePackage() {
    Sandbox::restart();
    writeFile("BuildVersion.txt", "7.1a.1.1a\n");
    for (const std::string& image : split(all, ' ')) {
        writeFile("3C01" + image + ".bin", "");
    }
}

// The image that a command flashes, the port whose stamp it reads, or what else it does.
static std::string stepOf(const std::string& command) {
    const size_t image = command.find(" 3C01");
    if (image != std::string::npos) {
        return command.substr(image + 5, command.find(".bin") - image - 5) + " ";
    }
    const std::string steps[][2] = {{"-show vpdv0 >", command.substr(2, 3)},
                                    {"-vpdv0 7.1a.1.1a >>L", "stamp "},
                                    {"-show vpdyb >>", "yb "},
                                    {"-delete isb_cfg >>L", "cfg "},
                                    {"-delete isb_cfg2 >>L", "cfg2 "},
                                    {" crc <y >>L", "crc "}};
    for (const auto& step : steps) {
        if (command.find(step[0]) != std::string::npos) {
            return step[1];
        }
    }
    return command;
}

// The steps of a pass over these ports, and its status.
static std::string run(const std::vector<Device>& devices) {
    const Ports ports(devices);
    RefineTheList(&ports.list);
    int status = 0;
    consoleOf([&] { status = updateDevices(&ports.list, "T", "II"); });
    std::string steps;
    for (const std::string& command : split(commands, '|')) {
        steps += stepOf(command);
    }
    return steps + "= " + std::to_string(status);
}

TEST_F(UpdatePass, FlashesThePresentComponentsInOrder) {
    const struct {
        std::string present;
        uint8_t vtNcsi;
        uint8_t iscsiFix;
        uint32_t subsysId;
        const char* steps;
    } rows[] = {
        {all, 0, 0, 0, "M1 stamp bc mfw1 ipmi asf mba l2t ump ncsi imfw ib = 0"},
        {all, 1, 0, 0, "M1 stamp bc mfw1 ipmi asf mba l2t ump ncsi ncsi ib = 0"},
        {"mfw1 imfw ", 1, 1, 0, "M1 stamp mfw1 ncsi = 0"},
        {"bc ib ", 0, 1, 0x0B22, "M1 stamp bc cfg cfg2 ib = 0"},
        {"bc ib ", 0, 0, 0x0B24, "yb M1 stamp bc ib = 0"},
        {"bc ib ", 0, 0, 0x0B21, "yb M1 stamp bc ib = 0"},
    };
    for (const auto& row : rows) {
        preparePackage();
        bool_vt_ncsi = row.vtNcsi;
        bool_iscsi_fix = row.iscsiFix;
        Device port = makePort(row.present);
        port.subsysId = row.subsysId;
        setVersion(port.l2Ver, isPresent(port.l2Ver) ? "1" : "na");
        EXPECT_EQ(run({port}), row.steps);
    }
}

TEST_F(UpdatePass, LastFailureIsTheStatusAndFromTheFirstOnEveryPortIsChecked) {
    // A letter and a bus for each port: "o" goes well, "f" fails, "d" is down, "c" is corrupted,
    // "b" both. Then the steps, and the buses that are marked.
    const std::string rows[][3] = {
        {"o5o5", "M1 stamp bc = 0", "5"},
        {"o-o-", "M1 stamp bc M2 stamp bc = 0", ""},
        {"f5o5", "M1 stamp bc crc M2 stamp bc crc = 1", ""},
        {"f5o6o7", "M1 stamp bc crc M2 stamp bc crc M3 stamp bc crc = 1", ""},
        {"o5f6o5", "M1 stamp bc M2 stamp bc crc = 1", "5"},
        {"d5f6", "M1 stamp crc M2 stamp bc crc = 1", ""},
        {"f5d6", "M1 stamp bc crc M2 stamp crc = 172", ""},
        {"d5o6", "M1 stamp crc M2 stamp bc crc = 172", ""},
        {"c5", "M1 stamp crc = 1", ""},
        {"b5", "M1 stamp crc = 172", ""},
        {"", "= 0", ""},
    };
    for (const auto& row : rows) {
        preparePackage();
        std::vector<Device> devices;
        for (size_t i = 0; i < row[0].size(); i += 2) {
            const char kind = row[0][i];
            const int number = static_cast<int>(i / 2) + 1;
            Device port = makePort("bc ", number, row[0][i + 1] == '-' ? -1 : row[0][i + 1] - '0');
            setVersion(port.driverVer, kind == 'd' || kind == 'b' ? "na" : "");
            setVersion(port.bootVer, kind == 'c' || kind == 'b' ? "Na" : "");
            shellRules.push_back({port.mac + std::string(" upgrade"), kind == 'f' ? 256 : 0});
            devices.push_back(port);
        }
        EXPECT_EQ(run(devices), row[1]);
        std::string marked;
        for (const CheckListEntry& entry : checkList) {
            marked += entry.updated == 1 ? std::to_string(entry.bus) : "";
        }
        EXPECT_EQ(marked, row[2]) << row[0];
    }
}

TEST_F(UpdatePass, EndsAtOnceWithoutBuildVersionSavedStampOrMemory) {
    const std::string stampFile = "M1_VPD_V0_Data1.log";
    // What is missing, the steps, what is logged, and what is left of the first port's stamp.
    const std::string rows[][4] = {
        {"build", "= -1", "", "of an older run"},
        {"stamp", "M1 = 1", "!!! Error performing VPDV0 check on device M1 !!!\n\n", "saved"},
        {"list", "M1 stamp bc = 1", "Error! Unable to build II device list.\n", "saved"},
        {"record", "M1 stamp bc M2 stamp bc crc = 1",
         "device M1.\n\nNow starting a CRC check for each Kelvane Ethernet adapter.\n\nCRC check complete.\n",
         ""},
    };
    for (const auto& row : rows) {
        preparePackage();
        std::filesystem::remove(row[0] == "build" ? "BuildVersion.txt" : "none");
        writeFile(stampFile, "of an older run");
        shellRules = {{"M1 upgrade", 256},
                      {"M1 cfg -show", row[0] == "stamp" ? 24320 : 0, "saved"}};
        failingAllocation = row[0] == "list" ? 1 : row[0] == "record" ? 2 : 0;
        EXPECT_EQ(run({makePort("bc "), makePort("bc ", 2, 6)}), row[1]);
        EXPECT_TRUE(isLogged(row[2])) << row[0];
        EXPECT_EQ(readFile(stampFile), row[3]);
    }
}

}  // namespace fwup
