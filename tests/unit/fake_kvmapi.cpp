#include "fake_kvmapi.h"

#include <algorithm>

namespace fwup {

FakeLibrary library;

static uint32_t answer(const std::string& name, const std::string& number = "") {
    library.calls += name + number + " ";
    return library.statuses[name];
}

static uint32_t tellCount(const std::string& name, uint32_t* count) {
    *count = static_cast<uint32_t>(library.nics.size()) + library.uncounted;
    return answer(name);
}

uint32_t KVmapiInitialize() {
    return answer("Initialize");
}

uint32_t KVmapiUninitialize() {
    return answer("Uninitialize");
}

uint32_t KVmapiGetNumPhyNic(uint32_t* count) {
    return tellCount("GetNumPhyNic", count);
}

uint32_t KVmapiGetNumPhyNicEx(uint32_t* count) {
    return tellCount("GetNumPhyNicEx", count);
}

uint32_t KVmapiGetAllPhyNic(_KV_PHY_NIC_SUMMARY* summaries, uint32_t entries) {
    for (size_t i = 0; i < std::min<size_t>(entries, library.nics.size()); i++) {
        summaries[i] = library.nics[i].summary;
    }
    return answer("GetAllPhyNic", std::to_string(entries));
}

uint32_t KVmapiGetAllPhyNicHandles(uint32_t* handles, uint32_t entries) {
    for (size_t i = 0; i < std::min<size_t>(entries, library.nics.size()); i++) {
        handles[i] = library.nics[i].summary.handle;
    }
    return answer("GetAllPhyNicHandles", std::to_string(entries));
}

uint32_t KVmapiGetPhyNic(uint32_t handle, _KV_ADAPTER_INFO_EX* info) {
    answer("GetPhyNic", std::to_string(handle));
    for (const FakeNic& nic : library.nics) {
        if (nic.summary.handle == handle && info->requestCode == 11) {
            *info = nic.info;
            return nic.infoStatus;
        }
    }
    return 1;
}

uint32_t KVmapiConfigNicPartMAC(uint32_t nicHandle) {
    answer("ConfigNicPartMAC", std::to_string(nicHandle));
    for (const FakeNic& nic : library.nics) {
        if (nic.info.nicHandle == nicHandle) {
            return nic.repairStatus;
        }
    }
    return 1;
}

}  // namespace fwup
