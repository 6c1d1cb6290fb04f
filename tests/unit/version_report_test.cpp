#include "inventory/version_report.h"

#include "sandbox.h"

namespace fwup {

using VersionReport = Sandbox;

TEST_F(VersionReport, ShowsARowForEachPort) {
    Device port = makePort("", 1, -1);
    for (const Component& component : components) {
        setVersion(port.*component.version, ("1234567890 " + component.name).c_str());
    }
    setVersion(port.chipName, "3C01");
    port.pciFunction = 0x80000000;
    const std::string table =
        "\n    ADAPTER MAC    \tBOOT\tMFW\tIPMI\tASF\tPXE\tUMP\tNCSI\tiSCSI\tEFI\tIMFW\tL2\t\tBUS:DEVICE:FUNC\n"
        "-------------------\t----\t----\t----\t---\t---\t---\t---\t---\t---\t---\t---\t\t---\n"
        "M1 (3C01)\t1234567890 bc \t1234567890 mfw\t1234567890 ipm\t1234567890 asf\t1234567890 mba\t1234567890 ump\t1234567890 ncs\t1234567890 ib \t1234567890 efi\t1234567890 imf\t1234567890 l2t\t\t-1:0:-2147483648\n";
    const Ports ports({port});
    EXPECT_EQ(consoleOf([&] { displayFwVersions(&ports.list); }), table);
    EXPECT_EQ(readFile("L"), table);
    EXPECT_EQ(consoleOf([] { displayFwVersions(nullptr); }), table.substr(0, table.find("M1 (")));
}

}  // namespace fwup
