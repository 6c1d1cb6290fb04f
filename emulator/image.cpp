#include "image.h"

#include <sstream>

#include "component.h"
#include "exit_code.h"
#include "text.h"

namespace emulator {

static const char magic[] = "Veltrasia II virtual firmware image";

std::string imageText(const Image& image) {
    return std::string(magic) + "\ndevice " + image.device + "\ncomponent " + image.component +
           "\nversion " + image.version + "\nend of image\n";
}

Image readImage(const std::string& path) {
    const std::string content = readFile(path, exitBrokenImage);
    if (content.compare(0, sizeof magic - 1, magic) != 0) {
        throw Failure(exitBrokenImage, path + ": not a firmware image");
    }
    std::istringstream words(content.substr(sizeof magic - 1));
    Image image;
    std::string label;
    words >> label >> image.device >> label >> image.component >> label >> image.version;
    // Writing it again proves every label, the order and the end at once.
    if (!words || imageText(image) != content) {
        throw Failure(exitBrokenImage, path + ": the firmware image is damaged");
    }
    if (imageNamed(image.component) == nullptr) {
        throw Failure(exitBrokenImage, path + ": unknown component " + image.component);
    }
    return image;
}

}  // namespace emulator
