#include "fixture.h"
#include "inventory/firmware_inventory.h"
#include "maintenance/diagnostics.h"

namespace fwup {

using Diagnostics = Fixture;

// The update pass never asks for one, as it makes the port's list anew.
TEST_F(Diagnostics, CrcCheckLeavesOutAPortWithoutDriver) {
    Ports ports({makePort()});
    setVersion(ports.devices[0].driverVer, "na");
    const std::string console = consoleOf([&] { perform_crc_check(&ports.list, "T"); });
    EXPECT_EQ(commands, "");
    EXPECT_TRUE(
        isLogged("\n\n!!! Error performing CRC check on device M1, adapter is down !!!\n\n\nCRC"));
    EXPECT_NE(console.find("device M1\t---> failed (adapter is down)\n\nCRC"), std::string::npos);
}

TEST_F(Diagnostics, DirectoryIsCopiedUnchanged) {
    const Ports ports({makePort()});
    for (const std::string& listing :
         {std::string(), std::string(300, 'x') + "\n100%s\n", std::string(254, 'x') + "\nend"}) {
        restart();
        writeFile("M1", listing);
        const std::string copy = "\n\nDirectory information for M1\n" + listing;
        EXPECT_EQ(consoleOf([&] { perform_dir_command(&ports.list); }), copy);
        EXPECT_EQ(consoleOf([] { write_device_info_file_to_log("M1", false); }), "");
        EXPECT_EQ(readFile("L"), copy + copy);
    }
    EXPECT_EQ(consoleOf([] { write_device_info_file_to_log("M2", false); }),
              "Error 9: Cannot access M2 information file.\n");
}

TEST_F(Diagnostics, IscsiConfigurationVersions) {
    const std::string first = "ISB_CFG  version for M1 is ";
    const std::string second = "ISB_CFG2 version for M1 is ";
    const std::string filling(240, '1');
    const std::string rows[][2] = {
        {" ISB_CFG2 v2\n ISB_CFG v1\n", first + "1\n" + second + "2\n"},
        {" ISB_CFG v1\n isb_cfg v3\n ISB_CFG2 v4\n isb_cfg2 v5\n", first + "3\n" + second + "5\n"},
        {" isb_cfg2 v" + filling + "\n", second + filling + "\n"},
        {" ISB_CFG \nISB_CFG2\n Isb_Cfg2 v1\n", first + "NA\n"},
    };
    const Ports ports({makePort()});
    for (const auto& row : rows) {
        writeFile("M1", row[0]);
        EXPECT_EQ(consoleOf([&] { display_iscsicfg_versions(&ports.list); }), row[1]);
    }
}

}  // namespace fwup
