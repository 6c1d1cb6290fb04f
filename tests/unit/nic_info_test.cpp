#include "inventory/nic_info.h"

#include <cstring>

#include "fake_kvmapi.h"
#include "sandbox.h"

namespace fwup {

class NicInfo : public Sandbox {
  protected:
    NicInfo() {
        library = {};
        for (const char* mac : {"M11", "m1", "M1"}) {
            FakeNic nic;
            nic.summary.handle = static_cast<uint32_t>(library.nics.size());
            nic.summary.driverPresent = 1;
            strcpy(nic.summary.macAddress, mac);
            strcpy(nic.summary.driverVersion, mac);
            // Each word of the record tells its own offset.
            for (uint32_t at = 0; at < sizeof nic.info; at += 4) {
                memcpy(reinterpret_cast<char*>(&nic.info) + at, &at, 4);
            }
            library.nics.push_back(nic);
        }
    }

    // What the port M1 knows after the library was asked.
    static std::string ask(bool known) {
        Ports ports({makePort("", 1, -1)});
        const Device& port = ports.devices[0];
        EXPECT_EQ(get_nic_info(&ports.list), known);
        char text[100];
        snprintf(text, sizeof text, "%u %u %u %u %d %u %u %s", port.vendorId, port.deviceId,
                 port.subsysVendorId, port.subsysId, port.pciBus, port.pciDevice, port.pciFunction,
                 port.driverVer);
        return text;
    }
};

TEST_F(NicInfo, CopiesIdentityAndDriverFromTheFirstNicWithTheMac) {
    FakeNic& nic = library.nics[1];
    EXPECT_EQ(ask(true), "460 464 468 472 560 564 568 m1");
    EXPECT_EQ(library.calls, "Initialize GetNumPhyNic GetAllPhyNic3 GetPhyNic1 Uninitialize ");
    // The library fills whole spans, and has no record; the driver is set all the same.
    memset(library.nics[0].summary.macAddress, 'M', sizeof nic.summary.macAddress);
    memset(nic.summary.driverVersion, '4', sizeof nic.summary.driverVersion);
    nic.infoStatus = 5;
    EXPECT_EQ(ask(true), "0 0 0 0 -1 0 0 44444444444444");
    nic.summary.driverPresent = 0;
    EXPECT_EQ(ask(true), "0 0 0 0 -1 0 0 NA");
    library.nics.resize(1);
    EXPECT_EQ(ask(true), "0 0 0 0 -1 0 0 3.1");
    EXPECT_TRUE(get_nic_info(nullptr));
}

TEST_F(NicInfo, FailureToListTheNicsIsFalseAndStillReleasesTheLibrary) {
    const char* const noMemory = "Error! Unable to create resources for ptr_phy_list.\n";
    const struct {
        const char* failing;
        int failingAllocation;
        uint32_t uncounted;
        const char* message;
        const char* calls;
    } rows[] = {
        {"GetNumPhyNic", 0, 0, "", "Initialize GetNumPhyNic Uninitialize "},
        {"GetAllPhyNic", 0, 0, "", "Initialize GetNumPhyNic GetAllPhyNic3 Uninitialize "},
        {"", 1, 0, noMemory, "Initialize GetNumPhyNic Uninitialize "},
        {"", 0, 9502138, noMemory, "Initialize GetNumPhyNic Uninitialize "},  // 2^32 bytes and 436
    };
    for (const auto& row : rows) {
        library.calls.clear();
        library.statuses = {{row.failing, 1}};
        library.uncounted = row.uncounted;
        failingAllocation = row.failingAllocation;
        EXPECT_EQ(consoleOf([] { EXPECT_EQ(ask(false), "0 0 0 0 -1 0 0 3.1"); }), row.message);
        EXPECT_EQ(library.calls, row.calls);
    }
}

}  // namespace fwup
