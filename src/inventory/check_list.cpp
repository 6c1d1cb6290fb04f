#include "inventory/check_list.h"

namespace fwup {

CheckListEntry checkList[maxNumberOfDevices];

void resetCheckList() {
    for (CheckListEntry& entry : checkList) {
        entry = {-1, 0};
    }
}

// The used entry of this bus, or else the first free one; null when the bus is
// not there and the table is full.
static CheckListEntry* findEntry(int bus) {
    for (CheckListEntry& entry : checkList) {
        if (entry.bus == -1 || entry.bus == bus) {
            return &entry;
        }
    }
    return nullptr;
}

int RefineTheList(const DeviceHeadTail* list) {
    for (const Device* device = firstDevice(list); device != nullptr; device = device->next) {
        CheckListEntry* entry = findEntry(device->pciBus);
        if (entry != nullptr && entry->bus == -1) {
            *entry = {device->pciBus, 0};
        }
    }
    return 1;
}

bool IsUpdatedBefore(int bus) {
    const CheckListEntry* entry = findEntry(bus);
    return entry != nullptr && entry->bus != -1 && entry->updated == 1;
}

bool UpdateCheckList(int bus) {
    CheckListEntry* entry = findEntry(bus);
    if (entry == nullptr || entry->bus == -1 || entry->updated == 1) {
        return false;
    }
    entry->updated = 1;
    return true;
}

}  // namespace fwup
