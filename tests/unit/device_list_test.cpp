#include "inventory/device_list.h"

#include "fixture.h"
#include "inventory/discovery.h"

namespace fwup {

using DeviceList = Fixture;

TEST_F(DeviceList, LeavesOutAPortThatCannotBeAllocated) {
    const std::string message = "Error! Unable to create resources for device M2.\n";
    DeviceHeadTail* list = createList();
    failingAllocation = 2;
    addDevicetoList(list, "3C01", "M1", 7);
    EXPECT_EQ(consoleOf([&] { addDevicetoList(list, "3C02", "M2", 7); }), message);
    EXPECT_EQ(readFile("L"), message);
    addDevicetoList(list, "3C03", "M3", 7);
    EXPECT_EQ(getDeviceCount(list), 2);
    EXPECT_STREQ(list->head->next->didStr, "3C03");
    consoleOf([&] { releaseList(&list); });
    EXPECT_EQ(list, nullptr);
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
