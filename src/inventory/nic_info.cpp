#include "inventory/nic_info.h"

#include <strings.h>

#include <cstdlib>

#include "log/update_log.h"
#include "platform/kvmapi.h"

namespace fwup {

static const _KV_PHY_NIC_SUMMARY* findSummary(const _KV_PHY_NIC_SUMMARY* summaries, uint32_t count,
                                              const char* mac) {
    for (uint32_t i = 0; i < count; i++) {
        // Bounded: the library may fill the whole field and not terminate it.
        if (strncasecmp(summaries[i].macAddress, mac, sizeof summaries[i].macAddress) == 0) {
            return &summaries[i];
        }
    }
    return nullptr;
}

static void copyIdentity(Device* device, uint32_t handle) {
    _KV_ADAPTER_INFO_EX info = {};
    info.requestCode = kvmapiRequestAdapterInfo;
    if (KVmapiGetPhyNic(handle, &info) != 0) {
        return;
    }
    device->deviceId = info.pciDeviceId;
    device->vendorId = info.pciVendorId;
    device->subsysId = info.pciSubsysId;
    device->subsysVendorId = info.pciSubsysVendorId;
    device->pciBus = static_cast<int32_t>(info.busNumber);
    device->pciFunction = info.functionNumber;
    device->pciDevice = info.deviceNumber;
}

static void copyNicInfo(DeviceHeadTail* list, const _KV_PHY_NIC_SUMMARY* summaries,
                        uint32_t count) {
    for (Device* device = firstDevice(list); device != nullptr; device = device->next) {
        const _KV_PHY_NIC_SUMMARY* summary = findSummary(summaries, count, device->mac);
        if (summary == nullptr) {
            continue;
        }
        copyIdentity(device, summary->handle);
        setVersion(device->driverVer, summary->driverPresent == 0 ? "NA" : summary->driverVersion);
    }
}

// The summaries stay the caller's to free, also after a failure.
static bool readSummaries(_KV_PHY_NIC_SUMMARY** summaries, uint32_t* count) {
    if (KVmapiGetNumPhyNic(count) != 0) {
        return false;
    }
    // calloc also refuses a count whose product overflows.
    *summaries = static_cast<_KV_PHY_NIC_SUMMARY*>(calloc(*count, sizeof(_KV_PHY_NIC_SUMMARY)));
    if (*summaries == nullptr) {
        writetoLog("Error! Unable to create resources for ptr_phy_list.\n", true);
        return false;
    }
    return KVmapiGetAllPhyNic(*summaries, *count) == 0;
}

bool get_nic_info(DeviceHeadTail* list) {
    _KV_PHY_NIC_SUMMARY* summaries = nullptr;
    uint32_t count = 0;
    KVmapiInitialize();
    const bool known = readSummaries(&summaries, &count);
    if (known) {
        copyNicInfo(list, summaries, count);
    }
    KVmapiUninitialize();
    free(summaries);
    return known;
}

}  // namespace fwup
