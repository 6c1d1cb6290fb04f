#include "image.h"

#include <cctype>
#include <sstream>

#include "component.h"
#include "exit_code.h"
#include "text.h"

namespace emulator {

namespace {

const char magic[] = "Veltrasia II virtual firmware image";

bool isDigit(char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

// Takes the digit run at `at` without its leading zeros.
std::string takeNumber(const std::string& text, size_t& at) {
    while (at < text.size() && text[at] == '0') {
        ++at;
    }
    const size_t start = at;
    while (at < text.size() && isDigit(text[at])) {
        ++at;
    }
    return text.substr(start, at - start);
}

}  // namespace

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

int compareVersions(const std::string& a, const std::string& b) {
    size_t i = 0;
    size_t j = 0;
    while (i < a.size() && j < b.size()) {
        if (isDigit(a[i]) && isDigit(b[j])) {
            const std::string left = takeNumber(a, i);
            const std::string right = takeNumber(b, j);
            if (left.size() != right.size()) {
                return left.size() < right.size() ? -1 : 1;
            }
            if (const int order = left.compare(right); order != 0) {
                return order;
            }
        } else if (a[i] != b[j]) {
            return static_cast<unsigned char>(a[i]) < static_cast<unsigned char>(b[j]) ? -1 : 1;
        } else {
            ++i;
            ++j;
        }
    }
    return static_cast<int>(i < a.size()) - static_cast<int>(j < b.size());
}

}  // namespace emulator
