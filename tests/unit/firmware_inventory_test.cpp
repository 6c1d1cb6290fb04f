#include "inventory/firmware_inventory.h"

#include "fixture.h"
#include "inventory/version_word.h"

namespace fwup {

using FirmwareInventory = Fixture;

TEST(VersionWord, FollowsTheLastDelimiter) {
    const char* const words =
        " 1 BC1 6144 v7.12.4\r\n=7.12.4|boot 7.10.4=7.10.4|x 7.10.4-2\n=2|1.2.3W5=5|aX9=9|aI8=8|"
        "L2T v\t\t1.2\tmore=1.2";
    size_t length = 0;
    for (const std::string& row : split(words, '|')) {
        std::string line = split(row, '=')[0];
        EXPECT_TRUE(parseForVersion(line.data()));
        EXPECT_EQ(line.c_str(), split(row, '=')[1]);
    }
    for (std::string line : split("FCODE\n|FCODE 1.2 \n|v1.2-\t\v\f\r\n|NCSI\n| ", '|')) {
        EXPECT_EQ(findVersionWord(line.c_str(), &length), nullptr) << line;
        const std::string before = line;
        EXPECT_TRUE(parseForVersion(line.data()));
        EXPECT_EQ(line, before);
    }
}

// What an inventory finds: the flags that are set and the versions that aren't "NA".
static std::string takeInventory() {
    Device port = makePort("bc asf imfw ");
    readInventory(&port);
    std::string text = port.hasMgmtFw != 0 ? "mgmt " : "";
    text += port.mbaLegacy != 0 ? "legacy " : "";
    text += port.mbaHostClp != 0 ? "clp " : "";
    for (const Component& component : components) {
        const std::string version = port.*component.version;
        text += version == "NA" ? "" : component.name + (" " + version) + " ";
    }
    return text;
}

TEST_F(FirmwareInventory, ReadsVersionsAndFlagsFromTheListing) {
    const std::string rows[][2] = {
        {"", ""},
        {" bc1 v1\n PCI30 MBA v2\n NCSI v3\n", ""},  // nothing opens the gate
        {"xBC1x\n", "mgmt "},
        {"mfw1\n PCI30 MBA v2\n", "mgmt mba 2 "},
        {" BC1 v1\n MFW1 v2\n IPMI v3\n UMP v4\n PCI30 MBA v5\n NCSI_X v6\n ISCSI v7\n EFI v8\n"
         "FCODE v9\nL2T v10\n ASF v11\n IMFW v12\n",
         "mgmt bc 1 mfw1 2 ipmi 3 mba 5 l2t 10 ump 4 ncsi 6 ib 7 efi 8 fcode 9 "},
        {" BC1 v1\n BC1 v2\n", "mgmt bc 1 "},
        {" BC1 v1\n bc1 v2\n MFW1 v3\n mfw1 v4\n IPMI v5\n ipmi v6\n PCI30 MBA v7\n mba v8\n",
         "mgmt legacy bc 2 mfw1 4 ipmi 6 mba 8 "},
        {"MFW\n HOSTPCI30_CLP MBA v1\n", "mgmt clp mba 1 "},
        {"MFW\n HOSTPCI30_CLP x MBA v1\n", "mgmt legacy clp mba 1 "},
        {"MFW\nFCODE\n L2 v4\nL2T v1 \n ump v2\nefi v3\n", "mgmt "},
        {"MFW\n EFI v123456789012345\n", "mgmt efi 12345678901234 "},
        {"MFW\nxEFIx v1\nxISCSIx v2\nxNCSIx v3\nxL2Tx v4\nxFCODEx v5\n",
         "mgmt l2t 4 ncsi 3 ib 2 efi 1 fcode 5 "},
        {"MFW\n HOSTPCI30_CLP x MBA \n", "mgmt legacy clp "},
        // A long line is read in pieces of 254 characters.
        {"MFW\n" + std::string(254, 'x') + "L2T v1\n", "mgmt l2t 1 "},
        {"MFW\n" + std::string(253, 'x') + "L2T v1\n", "mgmt "},
        {"MFW\n" + std::string(248, 'x') + "L2T v123\n", "mgmt l2t 1 "},
    };
    for (const auto& row : rows) {
        writeFile("M1", row[0]);
        EXPECT_EQ(takeInventory(), row[1]) << row[0];
    }
    restart();
    const std::string error = "Error 9: Cannot access M1 information file.\n";
    EXPECT_EQ(consoleOf([] { EXPECT_EQ(takeInventory(), ""); }), error + error + error + error);
}

}  // namespace fwup
