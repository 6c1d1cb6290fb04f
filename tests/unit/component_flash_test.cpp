#include "update/component_flash.h"

#include "sandbox.h"

namespace fwup {

using ComponentFlash = Sandbox;

// Flashes a component of a port that is what the words of `given` say, which are in its inventory,
// too. Every image is there, and a backup that some earlier run left.
static bool flash(const std::string& given, const std::string& component, int status) {
    Sandbox::restart();
    const auto isGiven = [&](const char* word) { return given.find(word) != std::string::npos; };
    for (const std::string& image : split("bc mfw1 ipmi asf mba mbaf l2t ump ncsi imfw ib", ' ')) {
        writeFile("3C01" + image + ".bin", "");
    }
    writeFile("nv.bak", "left");
    writeFile("BuildVersion.txt", "7.1a.1.1a\n");
    writeFile("M1_VPD_V0_Data1.log", isGiven("stamp") ? "VPD (V0): 1\n" : "");
    writeFile("M1", given);
    shellRules = {{"upgrade", status}};
    Device port = makePort();
    port.hasMgmtFw = !isGiven("nomgmt");
    port.mbaLegacy = isGiven("legacy");
    port.mbaHostClp = isGiven("clp");
    bForce = isGiven("force");
    bool updated = false;
    consoleOf([&] { updated = updateFirmware(&port, component.c_str(), "T"); });
    EXPECT_EQ(bForce == 1, isGiven("force"));
    EXPECT_EQ(readFile("nv.bak"), "");
    return updated;
}

TEST_F(ComponentFlash, RunsTheCommandThatComponentAndPortCallFor) {
    const char* const rows =
        "|bc|-bc 3C01bc.bin nv.bak\n|mfw1|-F -mfw1 3C01mfw1.bin\n|ipmi|-ipmi 3C01ipmi.bin\n"
        "|asf|-asf 3C01asf.bin\n|mba|-mba 3C01mba.bin\n|l2t|-l2t 3C01l2t.bin\n"
        "|ump|-ump 3C01ump.bin\n|ncsi|-ncsi 3C01ncsi.bin\n|imfw|-imfw 3C01imfw.bin\n"
        "|ib|-F -ib_ipv4n6 3C01ib.bin\nforce|bc|-F -bc 3C01bc.bin nv.bak\n"
        "stamp|bc|-F -bc 3C01bc.bin nv.bak\nforce stamp|ipmi|-F -ipmi 3C01ipmi.bin\n"
        "legacy|mba|-F -mba 3C01mba.bin\nclp|mba|-F -mba 3C01mba.bin\n"
        "legacy clp FCODE|ump|-ump 3C01ump.bin\nfcode|mba|-mba 3C01mbaf.bin\n"
        "Fcode|mba|-mba 3C01mbaf.bin\nFCODE clp|mba|-F -mba 3C01mbaf.bin\n"
        "FcODE|mba|-mba 3C01mba.bin";
    for (const std::string& row : split(rows, '\n')) {
        const Texts parts = split(row, '|');
        const std::string command = "T M1 upgrade -noreset " + parts[2];
        EXPECT_TRUE(flash(parts[0], parts[1], 0));
        EXPECT_EQ(commands, command + " >>L|");
        EXPECT_TRUE(flash(parts[0] + " nomgmt", parts[1], 0));
        EXPECT_EQ(commands, command + (parts[1] == "bc" ? "" : " nv.bak") + " >>L|");
    }
    EXPECT_FALSE(flash("", "none", 0));
    EXPECT_EQ(commands, "");
}

// Of a shell that dies itself, the number is all there is, and it reads as 0.
TEST_F(ComponentFlash, TakesAStatusBelow256ForSuccess) {
    EXPECT_TRUE(flash("", "ipmi", 9));
    EXPECT_TRUE(isLogged("*** Update successful ***\n\n"));
}

}  // namespace fwup
