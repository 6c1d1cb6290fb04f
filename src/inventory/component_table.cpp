#include "inventory/component_table.h"

#include <strings.h>

#include <cstdio>

namespace fwup {

const Component* findComponent(const char* name) {
    for (const Component& component : components) {
        if (strcasecmp(name, component.name) == 0) {
            return &component;
        }
    }
    return nullptr;
}

void writeImageName(char (&image)[imageNameSize], const char* did, const char* part) {
    snprintf(image, sizeof image, "%s%s.bin", did, part);
}

}  // namespace fwup
