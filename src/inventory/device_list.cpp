#include "inventory/device_list.h"

#include <cstdio>
#include <cstdlib>

#include "log/command_runner.h"
#include "log/update_log.h"

namespace fwup {

DeviceHeadTail* createList() {
    return static_cast<DeviceHeadTail*>(calloc(1, sizeof(DeviceHeadTail)));
}

void addDevicetoList(DeviceHeadTail* list, const char* didStr, const char* mac, unsigned int bus) {
    Device* device = static_cast<Device*>(calloc(1, sizeof(Device)));
    if (device == nullptr) {
        writeMessage(true, "Error! Unable to create resources for device %s.\n", mac);
        return;
    }
    snprintf(device->didStr, sizeof device->didStr, "%s", didStr);
    snprintf(device->mac, sizeof device->mac, "%s", mac);
    device->pciBus = static_cast<int32_t>(bus);
    if (list->head == nullptr) {
        list->head = device;
    } else {
        list->tail->next = device;
    }
    list->tail = device;
}

void emptyList(DeviceHeadTail* list) {
    if (list == nullptr) {
        return;
    }
    while (list->head != nullptr) {
        Device* device = list->head;
        deleteFile(device->mac);
        list->head = device->next;
        free(device);
    }
    list->tail = nullptr;
}

void releaseList(DeviceHeadTail** list) {
    emptyList(*list);
    free(*list);
    *list = nullptr;
}

Device* firstDevice(const DeviceHeadTail* list) {
    return list == nullptr ? nullptr : list->head;
}

int getDeviceCount(const DeviceHeadTail* list) {
    int count = 0;
    for (const Device* device = list->head; device != nullptr; device = device->next) {
        count++;
    }
    return count;
}

}  // namespace fwup
