// The management library's answers: any counts, statuses and record contents.
#include <cstring>

#include "fuzz_io.h"
#include "inventory/nic_info.h"
#include "log/update_log.h"
#include "partmac/partition_mac.h"
#include "platform/kvmapi.h"

// A count too large to hold is a failed allocation, as in a 32-bit program.
extern "C" const char* __asan_default_options();

extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1:max_allocation_size_mb=1024";
}

static const uint8_t* answer;
static size_t answerLeft;

// Takes the next bytes of the input; zeros after its end.
static void take(void* to, size_t size) {
    const size_t taken = size < answerLeft ? size : answerLeft;
    memset(to, 0, size);
    memcpy(to, answer, taken);
    answer += taken;
    answerLeft -= taken;
}

// Mostly success, so that an input reaches the records.
static uint32_t takeStatus() {
    uint8_t status = 0;
    take(&status, sizeof status);
    return status < 200 ? 0 : status;
}

static uint32_t takeCount(uint32_t* count) {
    uint16_t taken = 0;
    take(&taken, sizeof taken);
    *count = taken == 0xFFFF ? 0xFFFFFFFF : taken % 64;
    return takeStatus();
}

namespace fwup {

uint32_t KVmapiInitialize() {
    return takeStatus();
}

uint32_t KVmapiUninitialize() {
    return takeStatus();
}

uint32_t KVmapiGetNumPhyNic(uint32_t* count) {
    return takeCount(count);
}

uint32_t KVmapiGetNumPhyNicEx(uint32_t* count) {
    return takeCount(count);
}

uint32_t KVmapiGetAllPhyNic(_KV_PHY_NIC_SUMMARY* summaries, uint32_t entries) {
    take(summaries, sizeof *summaries * entries);
    return takeStatus();
}

uint32_t KVmapiGetAllPhyNicHandles(uint32_t* handles, uint32_t entries) {
    take(handles, sizeof *handles * entries);
    return takeStatus();
}

uint32_t KVmapiGetPhyNic(uint32_t, _KV_ADAPTER_INFO_EX* info) {
    require(info->requestCode == kvmapiRequestAdapterInfo);
    take(info, sizeof *info);
    return takeStatus();
}

uint32_t KVmapiConfigNicPartMAC(uint32_t) {
    return takeStatus();
}

}  // namespace fwup

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    answer = data;
    answerLeft = size;
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
