// Says whether zentrix itself would take what is about to be packed.
//   package_check version TEXT   is TEXT a version?
//   package_check image NAME     is NAME the name of an image that a run flashes?
// The exit status is 0 for yes, 1 for no, which standard error explains, and 2
// for a wrong call.

#include <cstdio>
#include <cstring>

#include "inventory/component_table.h"
#include "inventory/supported_device.h"
#include "version/version_string.h"

namespace fwup {

static int checkVersion(const char* text) {
    _build_version_t version;
    if (isVersionString(text, &version) == 1) {
        return 0;
    }
    fprintf(stderr, "\"%s\" is no version that zentrix accepts, such as 7.12b.4.3a\n", text);
    return 1;
}

// Null parts are no image's.
static bool isImageOf(const char* name, const char* did, const char* part) {
    if (part == nullptr) {
        return false;
    }
    char image[imageNameSize];
    writeImageName(image, did, part);
    return strcmp(name, image) == 0;
}

static bool isImageOfDevice(const char* name, const char* did) {
    for (const Component& component : components) {
        if (!hasTrait(&component, neverFlashed) &&
            (isImageOf(name, did, component.name) || isImageOf(name, did, component.fcodeImage))) {
            return true;
        }
    }
    return false;
}

static void sayWhatFits(const char* name) {
    fprintf(stderr, "\"%s\" isn't named by a device ID, a component and .bin; device IDs:", name);
    for (const SupportedDevice* device = SUPDID; device->did != nullptr; device++) {
        fprintf(stderr, " %s", device->did);
    }
    fprintf(stderr, "; components:");
    for (const Component& component : components) {
        if (!hasTrait(&component, neverFlashed)) {
            fprintf(stderr, " %s", component.name);
        }
        if (component.fcodeImage != nullptr) {
            fprintf(stderr, " %s", component.fcodeImage);
        }
    }
    fprintf(stderr, "\n");
}

static int checkImage(const char* name) {
    for (const SupportedDevice* device = SUPDID; device->did != nullptr; device++) {
        if (isImageOfDevice(name, device->did)) {
            return 0;
        }
    }
    sayWhatFits(name);
    return 1;
}

}  // namespace fwup

int main(int argc, char** argv) {
    if (argc == 3 && strcmp(argv[1], "version") == 0) {
        return fwup::checkVersion(argv[2]);
    }
    if (argc == 3 && strcmp(argv[1], "image") == 0) {
        return fwup::checkImage(argv[2]);
    }
    fprintf(stderr, "usage: package_check version TEXT | image NAME\n");
    return 2;
}
