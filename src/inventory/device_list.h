// The ports of one discovery, in the order of the utility's listing.
#pragma once

#include "inventory/device.h"

namespace fwup {

struct DeviceHeadTail {
    Device* head;
    Device* tail;
};

// An empty list, or null when it cannot be allocated. The owner releases it
// with releaseList, or with emptyList and free.
DeviceHeadTail* createList();

// Appends a new port with this device ID text, MAC and bus; everything else is
// zero. A port that cannot be allocated is reported and left out.
void addDevicetoList(DeviceHeadTail* list, const char* didStr, const char* mac, unsigned int bus);

// Releases every port of the list and deletes its inventory file. The header
// stays. A null list does nothing.
void emptyList(DeviceHeadTail* list);

// emptyList, then releases the header and clears the owner's pointer.
void releaseList(DeviceHeadTail** list);

// The first port; null for a null or an empty list.
Device* firstDevice(const DeviceHeadTail* list);

// The number of ports in a list that exists.
int getDeviceCount(const DeviceHeadTail* list);

}  // namespace fwup
