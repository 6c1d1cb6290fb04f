#include "update/component_flash.h"

#include "fixture.h"

namespace fwup {

using ComponentFlash = Fixture;

// Flashes a component of a port with this inventory. Every image is there, and a backup that some
// earlier run left.
static bool flash(const std::string& inventory, const std::string& component, bool hasMgmtFw,
                  int status) {
    Fixture::restart();
    for (const std::string& image : split("bc mfw1 ipmi asf mba mbaf l2t ump ncsi imfw ib", ' ')) {
        writeFile("3C01" + image + ".bin", "");
    }
    writeFile("nv.bak", "left");
    writeFile("M1", inventory);
    shellRules = {{"upgrade", status}};
    Device port = makePort();
    port.hasMgmtFw = hasMgmtFw;
    bool updated = false;
    consoleOf([&] { updated = updateFirmware(&port, component.c_str(), "T"); });
    EXPECT_EQ(readFile("nv.bak"), "");
    return updated;
}

// Without management firmware the utility makes a backup for every flash, else for the boot code's.
TEST_F(ComponentFlash, RunsTheCommandThatComponentAndPortCallFor) {
    const char* const rows =
        "|bc|-bc 3C01bc.bin\n|mfw1|-F -mfw1 3C01mfw1.bin\n|ipmi|-ipmi 3C01ipmi.bin\n"
        "|asf|-asf 3C01asf.bin\n|mba|-mba 3C01mba.bin\n|l2t|-l2t 3C01l2t.bin\n"
        "|ump|-ump 3C01ump.bin\n|ncsi|-ncsi 3C01ncsi.bin\n|imfw|-imfw 3C01imfw.bin\n"
        "|ib|-F -ib_ipv4n6 3C01ib.bin\nFCODE|ump|-ump 3C01ump.bin\nfcode|mba|-mba 3C01mbaf.bin\n"
        "Fcode|mba|-mba 3C01mbaf.bin\nFcODE|mba|-mba 3C01mba.bin";
    for (const std::string& row : split(rows, '\n')) {
        const Texts parts = split(row, '|');
        for (const bool hasMgmtFw : {true, false}) {
            const char* const backup = hasMgmtFw && parts[1] != "bc" ? "" : " nv.bak";
            EXPECT_TRUE(flash(parts[0], parts[1], hasMgmtFw, 0));
            EXPECT_EQ(commands, "T M1 upgrade -noreset " + parts[2] + backup + " >>L|");
        }
    }
    EXPECT_FALSE(flash("", "none", true, 0));
    EXPECT_EQ(commands, "");
}

// Of a shell that dies itself, the number is all there is, and it reads as 0.
TEST_F(ComponentFlash, TakesAStatusBelow256ForSuccess) {
    EXPECT_TRUE(flash("", "ipmi", true, 9));
    EXPECT_TRUE(isLogged("*** Update successful ***\n\n"));
}

}  // namespace fwup
