// A management library made of what a test puts into it.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/kvmapi.h"

namespace fwup {

struct FakeNic {
    _KV_PHY_NIC_SUMMARY summary = {};  // its handle names the NIC
    _KV_ADAPTER_INFO_EX info = {};
    uint32_t infoStatus = 0;    // what KVmapiGetPhyNic answers
    uint32_t repairStatus = 0;  // what KVmapiConfigNicPartMAC answers
};

struct FakeLibrary {
    std::vector<FakeNic> nics;
    std::map<std::string, uint32_t> statuses;  // of the other calls, by name without "KVmapi"
    uint32_t uncounted = 0;                    // NICs that are reported but not there
    std::string calls;  // every call, in order, each with its number and a blank
};
extern FakeLibrary library;

}  // namespace fwup
