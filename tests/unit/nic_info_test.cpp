#include "inventory/nic_info.h"

#include <cstring>

#include "fake_kvmapi.h"
#include "fixture.h"

namespace fwup {

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
