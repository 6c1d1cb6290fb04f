#include "fake_kvmapi.h"
#include "fixture.h"
#include "partmac/partition_mac.h"

namespace fwup {

using PartitionMac = Fixture;

static _KV_ADAPTER_INFO_EX identity(uint32_t vendor, uint32_t device, uint32_t subsysVendor,
                                    uint32_t subsys) {
    _KV_ADAPTER_INFO_EX info = {};
    info.pciVendorId = vendor;
    info.pciDeviceId = device;
    info.pciSubsysVendorId = subsysVendor;
    info.pciSubsysId = subsys;
    return info;
}

TEST_F(PartitionMac, NineIdentitiesAreEligibleAndNoneBesides) {
    const auto isEligible = [](const _KV_ADAPTER_INFO_EX& info) {
        return _CanUpdateNPARMAC(&info);
    };
    for (uint32_t device = 0x3C00; device <= 0x3C0A; device++) {
        for (uint32_t subsys = 0x0B20; subsys <= 0x0B24; subsys++) {
            const bool listed =
                device > 0x3C00 && device < 0x3C0A && subsys == 0x0B21 + (device - 0x3C01) / 3;
            EXPECT_EQ(isEligible(identity(0x1D2B, device, 0x1E57, subsys)), listed) << device;
            EXPECT_FALSE(isEligible(identity(0x1D2C, device, 0x1E57, subsys)));
            EXPECT_FALSE(isEligible(identity(0x1D2B, device, 0x1E56, subsys)));
        }
    }
}

TEST_F(PartitionMac, RepairWalksUpToTheFirstNicWithoutRecord) {
    const std::string both = "Handles2 GetPhyNic0 ConfigNicPartMAC70 GetPhyNic1 ConfigNicPartMAC71";
    const struct {
        // A NIC each: "c" is changed by the repair, "k" kept, "e" fails to be repaired, "o" is
        // another adapter, "r" has no record.
        std::string nics;
        bool changed;
        std::string calls;  // after the first ones
        const char* failing = "";
        int failingAllocation = 0;
        uint32_t uncounted = 0;
    } rows[] = {
        {"ck", true, both},
        {"ec", true, both},
        {"ke", false, both},
        {"oo", false, "Handles2 GetPhyNic0 GetPhyNic1"},
        {"crc", true, "Handles3 GetPhyNic0 ConfigNicPartMAC70 GetPhyNic1"},
        {"rc", false, "Handles2 GetPhyNic0"},
        {"", false, ""},
        {"c", false, "", "GetNumPhyNicEx"},
        {"c", false, "Handles1", "GetAllPhyNicHandles"},
        {"c", false, "", "", 1},
        {"c", false, "", "", 2},
        {"c", false, "", "", 0, 3195660},  // 2^32 bytes of records and 1088
    };
    for (const auto& row : rows) {
        library = {};
        for (const char kind : row.nics) {
            FakeNic nic;
            nic.info = identity(0x1D2B, kind == 'o' ? 0x3C04 : 0x3C01, 0x1E57, 0x0B21);
            nic.summary.handle = static_cast<uint32_t>(library.nics.size());
            nic.info.nicHandle = 70 + nic.summary.handle;
            nic.infoStatus = kind == 'r' ? 1 : 0;
            nic.repairStatus = kind == 'k' ? 0 : kind == 'e' ? 4 : 201;
            library.nics.push_back(nic);
        }
        library.statuses[row.failing] = 1;
        library.uncounted = row.uncounted;
        failingAllocation = row.failingAllocation;
        EXPECT_EQ(fix_max_if_duplicate(), row.changed) << row.nics;
        EXPECT_EQ(library.calls, "Initialize GetNumPhyNicEx " +
                                     (row.calls.empty() ? "" : "GetAllPhyNic" + row.calls + " ") +
                                     "Uninitialize ");
    }
}

}  // namespace fwup
