// A flash utility that answers at once, so that a run's time is the tool's own
// and the shell's. Every flash and every setting succeeds and changes nothing.
#include <cstdio>
#include <cstring>

#include "fleet_size.h"

static int listPorts() {
    puts(" #    Device MAC           \n---- ------ -------------");
    const unsigned ports = countPorts();
    for (unsigned port = 0; port < ports; port++) {
        printf("%4u  3C01   " PORT_MAC "\n", port, port);
    }
    puts("Quit");
    return 0;
}

static int showDirectory() {
    puts("Entry  Type         Size      Version");
    puts("    0  bc1          0x8000    v7.12.1");
    puts("    1  mfw1         0x8000    v1.40.2");
    puts("    2  ipmi         0x8000    v2.5.1");
    puts("    3  UMP          0x8000    v3.1.4");
    puts("    4  PCI30 MBA    0x8000    v5.0.3");
    puts("    5  NCSI         0x8000    v2.3.9");
    puts("    6  ISCSI        0x8000    v6.1.7");
    puts("    7  EFI          0x8000    v4.2.2");
    puts("    8  L2T          0x8000    v1.0.2");
    return 0;
}

int main(int argc, char** argv) {
    if (argc == 1) {
        return listPorts();
    }
    if (argc == 3 && strcmp(argv[2], "dir") == 0) {
        return showDirectory();
    }
    if (argc == 5 && strcmp(argv[3], "-show") == 0) {
        puts("VPD (V0): 7.12b.4.3a");
    }
    return 0;
}
