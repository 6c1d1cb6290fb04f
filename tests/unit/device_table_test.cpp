#include "inventory/device_table.h"

#include "fixture.h"
#include "inventory/supported_device.h"

namespace fwup {

TEST(DeviceTable, KeepsTheSupportedPortsOfTheFirstTable) {
    const std::string top = "C DID  MAC   Drv\n- ---  ---   ---\n";
    const std::string rows[][2] = {
        {top + "1 3C01 0A yes\n\t12345 3C06\t0A\n", "3C01=0A 3C06=0A "},
        {"1 3C01 0A\nQuit\nC DID MAC\n\n2 3C02 0B\n", ""},
        {"Quit\nC MAC x\n1 3C01 0A\nQuit\n2 3C02 0B\n", ""},
        {"MAC MAC\n MAC \nQuit\n2 3C02 0B\n", "3C02=0B "},
        {top + "1 3C01 0A Quit\n2 3C02 0B\n", ""},
        {top + "2 3C02 0B\nQuit\n" + top + "3 3C03 0C\n", "3C02=0B "},
        {top + "1 3c01 0A\n2 3CFF 0B\n3 3C0 1\n4 3C011 1\n", ""},
        {top + "1 3C01 000000000000\n2 3C02 00GG\n3 3C03 G2\n4 3C04 -2\n5 3C05 +2\n", ""},
        {top + "1 3C01\n\n2 3C02 0B\n", "3C02=0B "},
        {top + "1 3C01 02000000000001\n2 3C02 020000000000002\n", "3C01=02000000000001 "},
        {top + "1 3C01XXXXX 0A\n2 3C01XXXXXX 0B\n3 XXXXXXXXXX3C01 0C\n", ""},
    };
    for (const auto& row : rows) {
        std::string ports;
        TableState state = TableState::beforeHeader;
        DeviceRow port = {};
        for (const std::string& line : split(row[0], '\n')) {
            if (readTableLine(&state, (line + "\n").c_str(), &port)) {
                ports += std::string(port.didStr) + "=" + port.mac + " ";
            }
        }
        EXPECT_EQ(ports, row[1]) << row[0];
    }
}

TEST(ChipLabel, EverySupportedDeviceHasOneOfFourOrFiveCharacters) {
    char label[8] = "";
    for (const SupportedDevice* device = SUPDID; device->did != nullptr; device++) {
        convertDIDtoName(device->did, label);
        EXPECT_EQ(std::string(label).size() / 2, 2U) << device->did << ": " << label;
    }
    convertDIDtoName("13C01", label);
    EXPECT_STREQ(label, "unknown");
}

}  // namespace fwup
