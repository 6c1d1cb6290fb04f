#include "maintenance/management_firmware.h"

#include "sandbox.h"

namespace fwup {

using ManagementFirmware = Sandbox;

TEST_F(ManagementFirmware, IsSwitchedUnlessItsFieldReadsNa) {
    Ports ports({makePort("bc ump "), makePort("", 2)});
    setVersion(ports.devices[1].ipmiVer, "");
    setVersion(ports.devices[1].ncsiVer, "na");
    shellRules = {{"-ump", 35 * 256}, {"-mgmt 1", 70 * 256}};
    consoleOf([&] {
        disableManagementFirmware(&ports.list, "T");
        set_ncsi_firmware(&ports.list, "T", true);
    });
    EXPECT_EQ(
        commands,
        "T M1 cfg -ump 0 >>L|T M2 cfg -ipmi 0 >>L|T M2 cfg -mgmt 0 >>L|T M2 cfg -mgmt 1 >>L|");
    EXPECT_TRUE(isLogged(" !!! Error disabling management firmware (UMP) on device M1 !!!\n\n"));
    EXPECT_TRUE(
        isLogged("*** Successfully disabled management firmware (NCSI) on device M2 ***\n\n"));
    EXPECT_TRUE(isLogged(" !!! Error Enabling management firmware (NSCI) on device M2 !!!\n\n"));
}

}  // namespace fwup
