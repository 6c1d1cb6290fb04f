#include <cstring>

#include "fake_kvmapi.h"
#include "fixture.h"
#include "inventory/check_list.h"
#include "inventory/device_list.h"
#include "inventory/device_table.h"
#include "inventory/discovery.h"
#include "inventory/firmware_inventory.h"
#include "inventory/nic_info.h"
#include "inventory/supported_device.h"
#include "inventory/version_word.h"

namespace fwup {

using CheckList = Fixture;

static void registerBus(int bus) {
    const Ports ports({makePort("", 1, bus)});
    EXPECT_EQ(RefineTheList(&ports.list), 1);
}

// How a bus answers before it is marked, to two attempts to mark it, and after.
static std::string mark(int bus) {
    std::string answers = IsUpdatedBefore(bus) ? "updated" : "new";
    answers += UpdateCheckList(bus) ? ", marked" : "";
    answers += UpdateCheckList(bus) ? ", marked again" : "";
    return answers + (IsUpdatedBefore(bus) ? ", updated" : ", new");
}

TEST_F(CheckList, MarksEachAdapterOnceAndNeverAnUnknownBus) {
    for (const int bus : {3, 3, -1}) {
        registerBus(bus);
    }
    EXPECT_EQ(checkList[1].bus, -1);
    EXPECT_EQ(mark(3), "new, marked, updated");
    EXPECT_EQ(mark(-1), "new, new");
    EXPECT_EQ(mark(4), "new, new");
    registerBus(3);
    EXPECT_EQ(mark(3), "updated, updated");
    // 255 more fill the table; what comes then has no place in it.
    for (int bus = 256; bus >= 0; bus--) {
        registerBus(bus);
    }
    EXPECT_EQ(mark(1), "new, marked, updated");
    EXPECT_EQ(mark(0), "new, new");
    EXPECT_EQ(mark(-1), "new, new");
}

using DeviceList = Fixture;

TEST_F(DeviceList, LeavesOutAPortThatCannotBeAllocated) {
    const std::string message = "Error! Unable to create resources for device M2.\n";
    DeviceHeadTail* list = createList();
    failingAllocation = 2;
    addDevicetoList(list, "3C01", "M1", 7);
    EXPECT_EQ(consoleOf([&] { addDevicetoList(list, "3C02", "M2", 7); }), message);
    EXPECT_EQ(readFile("L"), message);
    addDevicetoList(list, "3C03", "M3", 7);
    EXPECT_EQ(getDeviceCount(list), 2);
    EXPECT_STREQ(list->head->next->didStr, "3C03");
    consoleOf([&] { releaseList(&list); });
    EXPECT_EQ(list, nullptr);
}

TEST_F(DeviceList, DiscoveryEndsWhenItCannotBeAllocated) {
    char flashTool[flashToolSize] = "";
    writeFile("lnxfwvt2", "");
    failingAllocation = 1;
    EXPECT_EQ(consoleOf([&] { EXPECT_EQ(getDevices("II", flashTool), nullptr); }),
              "Error! Unable to build II device list.\n");
    EXPECT_EQ(commands, "");
}

TEST(DeviceTable, KeepsTheSupportedPortsOfTheFirstTable) {
    const std::string top = "C DID  MAC   Drv\n- ---  ---   ---\n";
    const std::string rows[][2] = {
        {top + "1 3C01 0A yes\n\t12345 3C06\t0A\n", "3C01=0A 3C06=0A "},
        {"1 3C01 0A\nQuit\nC DID MAC\n\n2 3C02 0B\n", ""},
        {"Quit\nC MAC x\n1 3C01 0A\nQuit\n2 3C02 0B\n", ""},
        {"MAC MAC\n MAC \nQuit\n2 3C02 0B\n", "3C02=0B "},
        {top + "1 3C01 0A Quit\n2 3C02 0B\n", ""},
        {top + "2 3C02 0B\nQuit\n" + top + "3 3C03 0C\n", "3C02=0B "},
        {top + "1 3c01 0A\n2 3CFF 0B\n3 3C0 1\n4 3C011 1\n", ""},
        {top + "1 3C01 000000000000\n2 3C02 00GG\n3 3C03 G2\n4 3C04 -2\n5 3C05 +2\n", ""},
        {top + "1 3C01\n\n2 3C02 0B\n", "3C02=0B "},
        {top + "1 3C01 02000000000001\n2 3C02 020000000000002\n", "3C01=02000000000001 "},
        {top + "1 3C01XXXXX 0A\n2 3C01XXXXXX 0B\n3 XXXXXXXXXX3C01 0C\n", ""},
    };
    for (const auto& row : rows) {
        std::string ports;
        TableState state = TableState::beforeHeader;
        DeviceRow port = {};
        for (const std::string& line : split(row[0], '\n')) {
            if (readTableLine(&state, (line + "\n").c_str(), &port)) {
                ports += std::string(port.didStr) + "=" + port.mac + " ";
            }
        }
        EXPECT_EQ(ports, row[1]) << row[0];
    }
}

TEST(ChipLabel, EverySupportedDeviceHasOneOfFourOrFiveCharacters) {
    char label[8] = "";
    for (const SupportedDevice* device = SUPDID; device->did != nullptr; device++) {
        convertDIDtoName(device->did, label);
        EXPECT_EQ(std::string(label).size() / 2, 2U) << device->did << ": " << label;
    }
    convertDIDtoName("13C01", label);
    EXPECT_STREQ(label, "unknown");
}

using FirmwareInventory = Fixture;

TEST(VersionWord, FollowsTheLastDelimiter) {
    const char* const words =
        " 1 BC1 6144 v7.12.4\r\n=7.12.4|boot 7.10.4=7.10.4|x 7.10.4-2\n=2|1.2.3W5=5|aX9=9|aI8=8|"
        "L2T v\t\t1.2\tmore=1.2";
    size_t length = 0;
    for (const std::string& row : split(words, '|')) {
        std::string line = split(row, '=')[0];
        EXPECT_TRUE(parseForVersion(line.data()));
        EXPECT_EQ(line.c_str(), split(row, '=')[1]);
    }
    for (std::string line : split("FCODE\n|FCODE 1.2 \n|v1.2-\t\v\f\r\n|NCSI\n| ", '|')) {
        EXPECT_EQ(findVersionWord(line.c_str(), &length), nullptr) << line;
        const std::string before = line;
        EXPECT_TRUE(parseForVersion(line.data()));
        EXPECT_EQ(line, before);
    }
}

// What an inventory finds: the flags that are set and the versions that aren't "NA".
static std::string takeInventory() {
    Device port = makePort("bc asf imfw ");
    readInventory(&port);
    std::string text = port.hasMgmtFw != 0 ? "mgmt " : "";
    text += port.mbaLegacy != 0 ? "legacy " : "";
    text += port.mbaHostClp != 0 ? "clp " : "";
    for (const Component& component : components) {
        const std::string version = port.*component.version;
        text += version == "NA" ? "" : component.name + (" " + version) + " ";
    }
    return text;
}

TEST_F(FirmwareInventory, ReadsVersionsAndFlagsFromTheListing) {
    const std::string rows[][2] = {
        {"", ""},
        {" bc1 v1\n PCI30 MBA v2\n NCSI v3\n", ""},  // nothing opens the gate
        {"xBC1x\n", "mgmt "},
        {"mfw1\n PCI30 MBA v2\n", "mgmt mba 2 "},
        {" BC1 v1\n MFW1 v2\n IPMI v3\n UMP v4\n PCI30 MBA v5\n NCSI_X v6\n ISCSI v7\n EFI v8\n"
         "FCODE v9\nL2T v10\n ASF v11\n IMFW v12\n",
         "mgmt bc 1 mfw1 2 ipmi 3 mba 5 l2t 10 ump 4 ncsi 6 ib 7 efi 8 fcode 9 "},
        {" BC1 v1\n BC1 v2\n", "mgmt bc 1 "},
        {" BC1 v1\n bc1 v2\n MFW1 v3\n mfw1 v4\n IPMI v5\n ipmi v6\n PCI30 MBA v7\n mba v8\n",
         "mgmt legacy bc 2 mfw1 4 ipmi 6 mba 8 "},
        {"MFW\n HOSTPCI30_CLP MBA v1\n", "mgmt clp mba 1 "},
        {"MFW\n HOSTPCI30_CLP x MBA v1\n", "mgmt legacy clp mba 1 "},
        {"MFW\nFCODE\n L2 v4\nL2T v1 \n ump v2\nefi v3\n", "mgmt "},
        {"MFW\n EFI v123456789012345\n", "mgmt efi 12345678901234 "},
        {"MFW\nxEFIx v1\nxISCSIx v2\nxNCSIx v3\nxL2Tx v4\nxFCODEx v5\n",
         "mgmt l2t 4 ncsi 3 ib 2 efi 1 fcode 5 "},
        {"MFW\n HOSTPCI30_CLP x MBA \n", "mgmt legacy clp "},
        // A long line is read in pieces of 254 characters.
        {"MFW\n" + std::string(254, 'x') + "L2T v1\n", "mgmt l2t 1 "},
        {"MFW\n" + std::string(253, 'x') + "L2T v1\n", "mgmt "},
        {"MFW\n" + std::string(248, 'x') + "L2T v123\n", "mgmt l2t 1 "},
    };
    for (const auto& row : rows) {
        writeFile("M1", row[0]);
        EXPECT_EQ(takeInventory(), row[1]) << row[0];
    }
    restart();
    const std::string error = "Error 9: Cannot access M1 information file.\n";
    EXPECT_EQ(consoleOf([] { EXPECT_EQ(takeInventory(), ""); }), error + error + error + error);
}

class NicInfo : public Fixture {
  protected:
    NicInfo() {
        library = {};
        for (const char* mac : {"M11", "m1", "M1"}) {
            FakeNic nic;
            nic.summary.handle = nic.info.busNumber = static_cast<uint32_t>(library.nics.size());
            nic.summary.driverPresent = 1;
            strcpy(nic.summary.macAddress, mac);
            strcpy(nic.summary.driverVersion, mac);
            library.nics.push_back(nic);
        }
    }

    // Bus and driver of the port M1 after the library was asked.
    static std::string ask(bool known) {
        Ports ports({makePort("", 1, -1)});
        EXPECT_EQ(get_nic_info(&ports.list), known);
        return std::to_string(ports.devices[0].pciBus) + " " + ports.devices[0].driverVer;
    }
};

TEST_F(NicInfo, CopiesIdentityAndDriverFromTheFirstNicWithTheMac) {
    FakeNic& nic = library.nics[1];
    EXPECT_EQ(ask(true), "1 m1");
    nic.summary.driverPresent = 2;
    EXPECT_EQ(ask(true), "1 m1");
    nic.info.pciVendorId = 7;
    nic.info.pciSubsysVendorId = 8;
    Ports ports({makePort()});
    EXPECT_TRUE(get_nic_info(&ports.list));
    EXPECT_EQ(ports.devices[0].vendorId * 10 + ports.devices[0].subsysVendorId, 78U);
    // The library fills whole spans, and has no record; the driver is set all the same.
    memset(library.nics[0].summary.macAddress, 'M', sizeof nic.summary.macAddress);
    memset(nic.summary.driverVersion, '4', sizeof nic.summary.driverVersion);
    nic.infoStatus = 5;
    EXPECT_EQ(ask(true), "-1 44444444444444");
    library.nics.resize(1);
    EXPECT_EQ(ask(true), "-1 3.1");
    EXPECT_TRUE(get_nic_info(nullptr));
}

TEST_F(NicInfo, FailureToListTheNicsIsFalseAndStillReleasesTheLibrary) {
    library.statuses["GetAllPhyNic"] = 1;
    EXPECT_EQ(ask(false), "-1 3.1");
    EXPECT_EQ(library.calls, "Initialize GetNumPhyNic GetAllPhyNic3 Uninitialize ");
    for (const uint32_t uncounted : {0U, 9502138U}) {  // 2^32 bytes and 436
        library.calls.clear();
        library.uncounted = uncounted;
        failingAllocation = uncounted == 0 ? 1 : 0;
        EXPECT_EQ(consoleOf([] { EXPECT_EQ(ask(false), "-1 3.1"); }),
                  "Error! Unable to create resources for ptr_phy_list.\n");
        EXPECT_EQ(library.calls, "Initialize GetNumPhyNic Uninitialize ");
    }
}

}  // namespace fwup
