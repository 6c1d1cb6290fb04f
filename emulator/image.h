// Firmware images for the virtual adapters: five lines of text.
#pragma once

#include <string>

namespace emulator {

struct Image {
    std::string device;     // the device ID it was made for, as "3C01"
    std::string component;  // an image kind's name, as "bc"
    std::string version;    // one word
};

// The text of an image file.
std::string imageText(const Image& image);

// Reads an image file. Throws Failure(exitBrokenImage) when it can't be read,
// or is not exactly what imageText writes.
Image readImage(const std::string& path);

}  // namespace emulator
