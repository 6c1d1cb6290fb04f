// The adapter maker's management library, libkvmapi.so.6: its calls and the
// two records it exchanges. Every call returns a 32-bit status, 0 for success.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fwup {

// The request code that KVmapiGetPhyNic expects in a record.
constexpr uint32_t kvmapiRequestAdapterInfo = 11;
// KVmapiConfigNicPartMAC's answer when it changed one of a NIC's MACs.
constexpr uint32_t kvmapiMacChanged = 201;

// One physical NIC. The text fields are zero-terminated by the library, but
// a reader must not rely on it: nothing beyond their span is theirs.
struct _KV_PHY_NIC_SUMMARY {
    uint8_t unused0[4];
    uint32_t handle;  // for KVmapiGetPhyNic
    uint8_t unused8[308];
    uint32_t driverPresent;  // not 0 when driverVersion is set
    char macAddress[40];
    char driverVersion[92];
};

static_assert(sizeof(_KV_PHY_NIC_SUMMARY) == 452);
static_assert(offsetof(_KV_PHY_NIC_SUMMARY, handle) == 4);
static_assert(offsetof(_KV_PHY_NIC_SUMMARY, driverPresent) == 316);
static_assert(offsetof(_KV_PHY_NIC_SUMMARY, macAddress) == 320);
static_assert(offsetof(_KV_PHY_NIC_SUMMARY, driverVersion) == 360);

// The extended record of one NIC.
struct _KV_ADAPTER_INFO_EX {
    uint32_t requestCode;  // in: kvmapiRequestAdapterInfo
    uint8_t unused4[8];
    uint32_t nicHandle;  // for KVmapiConfigNicPartMAC
    uint8_t unused16[444];
    uint32_t pciVendorId;
    uint32_t pciDeviceId;
    uint32_t pciSubsysVendorId;
    uint32_t pciSubsysId;
    uint8_t unused476[84];
    uint32_t busNumber;
    uint32_t deviceNumber;
    uint32_t functionNumber;
    uint8_t unused572[772];
};

static_assert(sizeof(_KV_ADAPTER_INFO_EX) == 1344);
static_assert(offsetof(_KV_ADAPTER_INFO_EX, requestCode) == 0);
static_assert(offsetof(_KV_ADAPTER_INFO_EX, nicHandle) == 12);
static_assert(offsetof(_KV_ADAPTER_INFO_EX, pciVendorId) == 460);
static_assert(offsetof(_KV_ADAPTER_INFO_EX, pciDeviceId) == 464);
static_assert(offsetof(_KV_ADAPTER_INFO_EX, pciSubsysVendorId) == 468);
static_assert(offsetof(_KV_ADAPTER_INFO_EX, pciSubsysId) == 472);
static_assert(offsetof(_KV_ADAPTER_INFO_EX, busNumber) == 560);
static_assert(offsetof(_KV_ADAPTER_INFO_EX, deviceNumber) == 564);
static_assert(offsetof(_KV_ADAPTER_INFO_EX, functionNumber) == 568);

extern "C" {

// Prepare the library for use, and release what that prepared.
uint32_t KVmapiInitialize();
uint32_t KVmapiUninitialize();

// The number of physical NICs, and a summary of each. The array holds
// `entries` records, which the library fills.
uint32_t KVmapiGetNumPhyNic(uint32_t* count);
uint32_t KVmapiGetAllPhyNic(_KV_PHY_NIC_SUMMARY* summaries, uint32_t entries);

// The number of physical NICs, and the handle of each, for the repair of
// partition MACs.
uint32_t KVmapiGetNumPhyNicEx(uint32_t* count);
uint32_t KVmapiGetAllPhyNicHandles(uint32_t* handles, uint32_t entries);

// Fills the extended record of one NIC; `requestCode` must be set on entry.
uint32_t KVmapiGetPhyNic(uint32_t handle, _KV_ADAPTER_INFO_EX* info);

// Repairs the partition MACs of the NIC with this record's `nicHandle`;
// answers kvmapiMacChanged when it changed one.
uint32_t KVmapiConfigNicPartMAC(uint32_t nicHandle);

}  // extern "C"

}  // namespace fwup
