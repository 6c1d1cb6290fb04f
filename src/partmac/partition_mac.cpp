#include "partmac/partition_mac.h"

#include <cstdlib>

namespace fwup {

struct AdapterIdentity {
    uint32_t vendorId;
    uint32_t deviceId;
    uint32_t subsysVendorId;
    uint32_t subsysId;
};

static const AdapterIdentity update_npar_mac_adapters[] = {
    {0x1D2B, 0x3C01, 0x1E57, 0x0B21}, {0x1D2B, 0x3C02, 0x1E57, 0x0B21},
    {0x1D2B, 0x3C03, 0x1E57, 0x0B21}, {0x1D2B, 0x3C04, 0x1E57, 0x0B22},
    {0x1D2B, 0x3C05, 0x1E57, 0x0B22}, {0x1D2B, 0x3C06, 0x1E57, 0x0B22},
    {0x1D2B, 0x3C07, 0x1E57, 0x0B23}, {0x1D2B, 0x3C08, 0x1E57, 0x0B23},
    {0x1D2B, 0x3C09, 0x1E57, 0x0B23},
};

bool _CanUpdateNPARMAC(const _KV_ADAPTER_INFO_EX* info) {
    for (const AdapterIdentity& row : update_npar_mac_adapters) {
        if (row.vendorId == info->pciVendorId && row.deviceId == info->pciDeviceId &&
            row.subsysVendorId == info->pciSubsysVendorId && row.subsysId == info->pciSubsysId) {
            return true;
        }
    }
    return false;
}

// Walks the NICs up to the first whose record cannot be had.
static int repairNics(const uint32_t* handles, _KV_ADAPTER_INFO_EX* infos, uint32_t count) {
    int changed = 0;
    for (uint32_t i = 0; i < count; i++) {
        infos[i].requestCode = kvmapiRequestAdapterInfo;
        if (KVmapiGetPhyNic(handles[i], &infos[i]) != 0) {
            break;
        }
        if (_CanUpdateNPARMAC(&infos[i]) &&
            KVmapiConfigNicPartMAC(infos[i].nicHandle) == kvmapiMacChanged) {
            changed = 1;
        }
    }
    return changed;
}

// What one repair works on; released only after the library is.
struct NicArrays {
    uint32_t* handles;
    _KV_ADAPTER_INFO_EX* infos;
};

// calloc also refuses a count whose product overflows.
static bool allocate(NicArrays* arrays, uint32_t count) {
    arrays->handles = static_cast<uint32_t*>(calloc(count, sizeof(uint32_t)));
    if (arrays->handles == nullptr) {
        return false;
    }
    arrays->infos = static_cast<_KV_ADAPTER_INFO_EX*>(calloc(count, sizeof(_KV_ADAPTER_INFO_EX)));
    return arrays->infos != nullptr;
}

int DoKVmapiConfigNicPartMAC() {
    int changed = 0;
    NicArrays arrays = {};
    uint32_t count = 0;
    KVmapiInitialize();
    if (KVmapiGetNumPhyNicEx(&count) == 0 && count != 0 && allocate(&arrays, count) &&
        KVmapiGetAllPhyNicHandles(arrays.handles, count) == 0) {
        changed = repairNics(arrays.handles, arrays.infos, count);
    }
    KVmapiUninitialize();
    free(arrays.infos);
    free(arrays.handles);
    return changed;
}

bool fix_max_if_duplicate() {
    return DoKVmapiConfigNicPartMAC() == 1;
}

}  // namespace fwup
