// The management library over the virtual adapters. It reads adapters.json at
// every KVmapiInitialize and keeps nothing once KVmapiUninitialize is called.

#include "platform/kvmapi.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>

#include "faults.h"
#include "fleet.h"
#include "text.h"

namespace {

using emulator::Fleet;
using emulator::Json;
using emulator::Port;

enum Status : uint32_t {
    statusDone = 0,
    statusFailed = 1,  // adapters.json can't be read or saved
    statusNotInitialized = 2,
    statusBadArgument = 3,
    statusNoSuchNic = 4,
};

// A NIC has one handle for reading and another one for changing it, as far
// apart as a caller may never take one for the other.
constexpr uint32_t firstHandle = 0x100;
constexpr uint32_t firstNicHandle = 0x10000;

// What lies between KVmapiInitialize and KVmapiUninitialize.
std::unique_ptr<Fleet> prepared;

// Nothing may be thrown into the caller, which is built without exceptions.
template <class Action>
uint32_t guarded(const char* function, Action action) {
    try {
        if (prepared == nullptr) {
            return statusNotInitialized;
        }
        const Json* fault = emulator::dueFault(*prepared, "call", Json{{"function", function}});
        if (fault != nullptr && fault->contains("status")) {
            return fault->value("status", 0U);
        }
        return action(fault);
    } catch (const std::exception& error) {
        fprintf(stderr, "libkvmapi: %s\n", error.what());
    } catch (...) {
        fprintf(stderr, "libkvmapi: unknown failure in %s\n", function);
    }
    return statusFailed;
}

std::vector<Port> nics() {
    return emulator::portsOf(*prepared, "reported");
}

uint32_t countNics(const char* function, uint32_t* count) {
    return guarded(function, [count](const Json* fault) -> uint32_t {
        if (count == nullptr) {
            return statusBadArgument;
        }
        *count = static_cast<uint32_t>(nics().size());
        if (fault != nullptr) {
            *count = fault->value("count", *count);
        }
        return statusDone;
    });
}

// The NIC with this handle; a Port of null pointers when there is none.
Port nicWithHandle(uint32_t handle, uint32_t first) {
    const std::vector<Port> all = nics();
    return handle >= first && handle - first < all.size() ? all[handle - first] : Port();
}

uint32_t pciId(const Json& adapter, const char* key) {
    const std::string& digits = adapter[key].get_ref<const std::string&>();
    return static_cast<uint32_t>(strtoul(digits.c_str(), nullptr, 16));
}

void fillSummary(const Port& nic, uint32_t handle, fwup::_KV_PHY_NIC_SUMMARY& summary) {
    const Json& port = *nic.port;
    const std::string mac = port.value("libraryMac", port["mac"].get<std::string>());
    const bool bound = port.contains("driver") && port["driver"].is_string();
    const std::string driver = bound ? port["driver"].get<std::string>() : std::string();
    memset(&summary, 0, sizeof summary);
    summary.handle = handle;
    summary.driverPresent = bound ? 1 : 0;
    snprintf(summary.macAddress, sizeof summary.macAddress, "%s", mac.c_str());
    snprintf(summary.driverVersion, sizeof summary.driverVersion, "%s", driver.c_str());
}

void fillInfo(const Port& nic, uint32_t nicHandle, fwup::_KV_ADAPTER_INFO_EX& info) {
    info.nicHandle = nicHandle;
    info.pciVendorId = pciId(*nic.adapter, "vendor");
    info.pciDeviceId = pciId(*nic.adapter, "device");
    info.pciSubsysVendorId = pciId(*nic.adapter, "subsystemVendor");
    info.pciSubsysId = pciId(*nic.adapter, "subsystem");
    info.busNumber = nic.adapter->value("bus", 0U);
    info.deviceNumber = nic.port->value("device", 0U);
    info.functionNumber = nic.port->value("function", 0U);
}

using MacSet = std::set<unsigned long long>;

unsigned long long macNumber(const Json& mac) {
    return strtoull(mac.get_ref<const std::string&>().c_str(), nullptr, 16);
}

// Every MAC of every port and partition.
MacSet macsInUse(Fleet& fleet) {
    MacSet used;
    for (const Port& port : emulator::portsOf(fleet, "")) {
        used.insert(macNumber((*port.port)["mac"]));
        for (const Json& mac : port.port->value("partitionMacs", Json::array())) {
            used.insert(macNumber(mac));
        }
    }
    return used;
}

// Gives each repeated MAC of the list the next one that nobody uses.
// True when there was one.
bool healDuplicates(Json& macs, MacSet used) {
    bool changed = false;
    MacSet seen;
    for (Json& mac : macs) {
        unsigned long long number = macNumber(mac);
        if (seen.count(number) != 0) {
            while (used.count(number) != 0) {
                number = (number + 1) & 0xFFFFFFFFFFFFULL;
            }
            used.insert(number);
            mac = emulator::format("%012llX", number);
            changed = true;
        }
        seen.insert(number);
    }
    return changed;
}

}  // namespace

namespace fwup {

extern "C" {

uint32_t KVmapiInitialize() {
    try {
        prepared.reset();
        prepared = std::make_unique<Fleet>(emulator::loadFleet());
    } catch (const std::exception& error) {
        fprintf(stderr, "libkvmapi: %s\n", error.what());
        return statusFailed;
    }
    const uint32_t status =
        guarded("KVmapiInitialize", [](const Json*) -> uint32_t { return statusDone; });
    if (status != statusDone) {
        prepared.reset();
    }
    return status;
}

uint32_t KVmapiUninitialize() {
    return guarded("KVmapiUninitialize", [](const Json*) -> uint32_t {
        prepared.reset();
        return statusDone;
    });
}

uint32_t KVmapiGetNumPhyNic(uint32_t* count) {
    return countNics("KVmapiGetNumPhyNic", count);
}

uint32_t KVmapiGetNumPhyNicEx(uint32_t* count) {
    return countNics("KVmapiGetNumPhyNicEx", count);
}

uint32_t KVmapiGetAllPhyNic(_KV_PHY_NIC_SUMMARY* summaries, uint32_t entries) {
    return guarded("KVmapiGetAllPhyNic", [summaries, entries](const Json*) -> uint32_t {
        if (summaries == nullptr && entries != 0) {
            return statusBadArgument;
        }
        const std::vector<Port> all = nics();
        for (uint32_t i = 0; i < entries && i < all.size(); ++i) {
            fillSummary(all[i], firstHandle + i, summaries[i]);
        }
        return statusDone;
    });
}

uint32_t KVmapiGetAllPhyNicHandles(uint32_t* handles, uint32_t entries) {
    return guarded("KVmapiGetAllPhyNicHandles", [handles, entries](const Json*) -> uint32_t {
        if (handles == nullptr && entries != 0) {
            return statusBadArgument;
        }
        const size_t count = nics().size();
        for (uint32_t i = 0; i < entries && i < count; ++i) {
            handles[i] = firstHandle + i;
        }
        return statusDone;
    });
}

uint32_t KVmapiGetPhyNic(uint32_t handle, _KV_ADAPTER_INFO_EX* info) {
    return guarded("KVmapiGetPhyNic", [handle, info](const Json*) -> uint32_t {
        if (info == nullptr || info->requestCode != kvmapiRequestAdapterInfo) {
            return statusBadArgument;
        }
        const Port nic = nicWithHandle(handle, firstHandle);
        if (nic.port == nullptr) {
            return statusNoSuchNic;
        }
        fillInfo(nic, handle - firstHandle + firstNicHandle, *info);
        return statusDone;
    });
}

uint32_t KVmapiConfigNicPartMAC(uint32_t nicHandle) {
    return guarded("KVmapiConfigNicPartMAC", [nicHandle](const Json*) -> uint32_t {
        const Port nic = nicWithHandle(nicHandle, firstNicHandle);
        if (nic.port == nullptr) {
            return statusNoSuchNic;
        }
        if (!nic.port->contains("partitionMacs") ||
            !healDuplicates((*nic.port)["partitionMacs"], macsInUse(*prepared))) {
            return statusDone;
        }
        emulator::saveFleet(*prepared);
        return kvmapiMacChanged;
    });
}

}  // extern "C"

}  // namespace fwup
