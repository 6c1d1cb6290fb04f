// How many two-port adapters the bench pretends to have: the number in the
// file "adapters" in the current directory.
#pragma once

#include <cstdio>

constexpr unsigned portsPerAdapter = 2;
// The format of a port's MAC, numbered from 0 in listing order.
#define PORT_MAC "02000000%04X"

inline unsigned countPorts() {
    unsigned adapters = 0;
    FILE* file = fopen("adapters", "r");
    if (file != nullptr) {
        if (fscanf(file, "%u", &adapters) != 1) {
            adapters = 0;
        }
        fclose(file);
    }
    return adapters * portsPerAdapter;
}
