// The firmware components an adapter can carry, and how the utility names them.
#pragma once

#include <string>

namespace emulator {

struct ComponentKind {
    const char* name;       // in adapters.json and in commands
    const char* listedAs;   // "Name" column of the directory
    const char* type;       // "Type" column of the directory
    const char* cfgSwitch;  // "cfg" option that turns it on and off, or null
};

// One kind of firmware image: the "upgrade" option that takes it, the component
// that it writes, which decides whether it is newer, and one that comes along.
struct ImageKind {
    const char* name;  // in the image and in its file name
    const char* option;
    const char* writes;
    const char* writesToo;  // or null
};

// Null when there is no such component, switch, image or option. Several
// images can share an option; the first stands for it.
const ComponentKind* componentNamed(const std::string& name);
const ComponentKind* componentSwitchedBy(const std::string& cfgSwitch);
const ImageKind* imageNamed(const std::string& name);
const ImageKind* imageForOption(const std::string& option);

}  // namespace emulator
