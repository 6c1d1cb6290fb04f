// A management library that answers at once for the bench's adapters.
#include "platform/kvmapi.h"

#include <cstring>

#include "fleet_size.h"

namespace fwup {

uint32_t KVmapiInitialize() {
    return 0;
}

uint32_t KVmapiUninitialize() {
    return 0;
}

uint32_t KVmapiGetNumPhyNic(uint32_t* count) {
    *count = countPorts();
    return 0;
}

uint32_t KVmapiGetNumPhyNicEx(uint32_t* count) {
    return KVmapiGetNumPhyNic(count);
}

uint32_t KVmapiGetAllPhyNic(_KV_PHY_NIC_SUMMARY* summaries, uint32_t entries) {
    for (uint32_t port = 0; port < entries; port++) {
        _KV_PHY_NIC_SUMMARY& summary = summaries[port];
        memset(&summary, 0, sizeof summary);
        summary.handle = port;
        summary.driverPresent = 1;
        snprintf(summary.macAddress, sizeof summary.macAddress, PORT_MAC, port);
        snprintf(summary.driverVersion, sizeof summary.driverVersion, "7.10.4");
    }
    return 0;
}

uint32_t KVmapiGetAllPhyNicHandles(uint32_t* handles, uint32_t entries) {
    for (uint32_t port = 0; port < entries; port++) {
        handles[port] = port;
    }
    return 0;
}

uint32_t KVmapiGetPhyNic(uint32_t handle, _KV_ADAPTER_INFO_EX* info) {
    memset(info, 0, sizeof *info);
    info->pciVendorId = 0x1D2B;
    info->pciDeviceId = 0x3C01;
    info->pciSubsysVendorId = 0x1E57;
    info->pciSubsysId = 0x0B22;
    info->busNumber = handle / portsPerAdapter;
    info->functionNumber = handle % portsPerAdapter;
    return 0;
}

uint32_t KVmapiConfigNicPartMAC(uint32_t /*nicHandle*/) {
    return 0;
}

}  // namespace fwup
