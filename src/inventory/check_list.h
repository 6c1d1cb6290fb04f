// Which adapters the update pass has already handled. Several ports share an
// adapter, and so its PCI bus; firmware is flashed once per adapter.
#pragma once

#include "inventory/device_list.h"

namespace fwup {

constexpr int maxNumberOfDevices = 256;

struct CheckListEntry {
    int32_t bus;  // -1 marks a free entry; the used ones come first
    uint8_t updated;
};

extern CheckListEntry checkList[maxNumberOfDevices];

// Frees every entry.
void resetCheckList();

// Gives every bus of the list an entry. A bus that finds no free one stays
// out: its ports are never skipped and never marked. Always returns 1.
int RefineTheList(const DeviceHeadTail* list);

// True when the adapter on this bus has been updated; false for bus -1.
bool IsUpdatedBefore(int bus);

// Marks the bus as updated. False when it has no entry that is still unmarked.
bool UpdateCheckList(int bus);

}  // namespace fwup
