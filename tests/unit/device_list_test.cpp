#include "inventory/device_list.h"

#include "inventory/discovery.h"
#include "sandbox.h"

namespace fwup {

using DeviceList = Sandbox;

TEST_F(DeviceList, HoldsPortsInOrderAndLeavesOutWhatCannotBeAllocated) {
    const std::string message = "Error! Unable to create resources for device M2.\n";
    DeviceHeadTail* list = createList();
    failingAllocation = 2;
    addDevicetoList(list, "3C01", "M1", static_cast<unsigned int>(-1));
    EXPECT_EQ(consoleOf([&] { addDevicetoList(list, "3C02", "M2", 7); }), message);
    EXPECT_EQ(readFile("L"), message);
    addDevicetoList(list, "3C03", "M1", 7);
    ASSERT_EQ(getDeviceCount(list), 2);
    EXPECT_EQ(list->tail, list->head->next);
    EXPECT_EQ(list->head->pciBus, -1);
    EXPECT_STREQ(list->tail->didStr, "3C03");
    consoleOf([&] { emptyList(list); });
    EXPECT_EQ(getDeviceCount(list), 0);
    addDevicetoList(list, "3C01", "M3", 1);
    EXPECT_EQ(list->head, list->tail);
    releaseList(&list);
    EXPECT_EQ(list, nullptr);
    releaseList(&list);
}

TEST_F(DeviceList, DiscoveryEndsWhenItCannotBeAllocated) {
    char flashTool[flashToolSize] = "";
    writeFile("lnxfwvt2", "");
    failingAllocation = 1;
    EXPECT_EQ(consoleOf([&] { EXPECT_EQ(getDevices("II", flashTool), nullptr); }),
              "Error! Unable to build II device list.\n");
    EXPECT_EQ(commands, "");
}

}  // namespace fwup
