// The management library's answers: any counts, statuses and record contents.
#include <cstring>

#include "fake_kvmapi.h"
#include "fuzz_io.h"
#include "inventory/nic_info.h"
#include "log/update_log.h"
#include "partmac/partition_mac.h"

// A count too large to hold is a failed allocation, as in a 32-bit program.
extern "C" const char* __asan_default_options();

extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1:max_allocation_size_mb=1024";
}

static const uint8_t* input;
static size_t inputLeft;

// Takes the next bytes of the input; zeros after its end.
template <typename Value>
static Value take() {
    Value value = {};
    const size_t taken = sizeof value < inputLeft ? sizeof value : inputLeft;
    memcpy(&value, input, taken);
    input += taken;
    inputLeft -= taken;
    return value;
}

// Mostly success, so that an input reaches the records.
static uint32_t takeStatus() {
    const uint8_t status = take<uint8_t>();
    return status < 200 ? 0 : status;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    input = data;
    inputLeft = size;
    fwup::library = {};
    for (const char* call : {"Initialize", "GetNumPhyNic", "GetNumPhyNicEx", "GetAllPhyNic",
                             "GetAllPhyNicHandles", "Uninitialize"}) {
        fwup::library.statuses[call] = takeStatus();
    }
    fwup::library.uncounted = take<uint8_t>() < 240 ? 0 : 0xFFFFFFFF - take<uint8_t>();
    fwup::library.nics.resize(take<uint8_t>() % 64);
    for (fwup::FakeNic& nic : fwup::library.nics) {
        nic.infoStatus = takeStatus();
        nic.repairStatus = takeStatus();
        nic.summary = take<fwup::_KV_PHY_NIC_SUMMARY>();
        nic.info = take<fwup::_KV_ADAPTER_INFO_EX>();
    }
    snprintf(fwup::szFwuplog, sizeof fwup::szFwuplog, "/dev/null");
    fwup::bSilent = 1;
    fwup::Device device = {};
    snprintf(device.mac, sizeof device.mac, "020000000001");
    fwup::DeviceHeadTail list = {&device, &device};
    fwup::get_nic_info(&list);
    require(strlen(device.driverVer) < sizeof device.driverVer);
    fwup::DoKVmapiConfigNicPartMAC();
    return 0;
}
