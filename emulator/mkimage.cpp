// Makes firmware images for the virtual adapters.
//   mkimage DEVICE COMPONENT VERSION >FILE
//   mkimage --list FILE     for each line "DEVICE COMPONENT VERSION" of FILE,
//                           writes DEVICECOMPONENT.bin in the current directory
//   mkimage --fleet DIR     copies a ready fleet's adapters.json and
//                           BuildVersion.txt there, and makes what its
//                           images.list lists
//   mkimage --newer         for every component in adapters.json, writes an image
//                           that is newer than what any adapter of its device has

#include <cstdio>
#include <cstring>
#include <exception>
#include <map>
#include <sstream>
#include <string>
#include <utility>

#include "component.h"
#include "exit_code.h"
#include "fleet.h"
#include "image.h"
#include "text.h"

namespace emulator {

namespace {

void checkImage(const Image& image) {
    if (!isHex(image.device, 4, 4)) {
        throw Failure(exitUsage, image.device + ": a device ID has four hexadecimal digits");
    }
    if (imageNamed(image.component) == nullptr) {
        throw Failure(exitUsage, image.component + ": no such component");
    }
    if (image.version.empty() || image.version.find_first_of(" \t\r\n") != std::string::npos) {
        throw Failure(exitUsage, "a version is one word");
    }
}

void makeListed(const std::string& listPath) {
    std::istringstream lines(readFile(listPath, exitUsage));
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        Image image;
        std::string rest;
        if (line.empty() || line[0] == '#') {
            continue;
        }
        if (!(words >> image.device >> image.component >> image.version) || words >> rest) {
            throw Failure(exitUsage, format("%s: expected DEVICE COMPONENT VERSION: %s",
                                            listPath.c_str(), line.c_str()));
        }
        checkImage(image);
        replaceFile(image.device + image.component + ".bin", imageText(image));
    }
}

void makeFleet(const std::string& directory) {
    for (const char* name : {"adapters.json", "BuildVersion.txt"}) {
        replaceFile(name, readFile(directory + "/" + name, exitUsage));
    }
    makeListed(directory + "/images.list");
}

// The next version: its last number plus one.
std::string newerThan(std::string version) {
    const size_t last = version.find_last_of("0123456789");
    if (last == std::string::npos) {
        return version + ".1";
    }
    const size_t before = version.find_last_not_of("0123456789", last);
    const size_t first = before == std::string::npos ? 0 : before + 1;
    std::string number = version.substr(first, last + 1 - first);
    size_t at = number.size();
    while (at > 0 && number[at - 1] == '9') {
        number[--at] = '0';
    }
    if (at == 0) {
        number.insert(0, "1");
    } else {
        number[at - 1]++;
    }
    return version.replace(first, last + 1 - first, number);
}

// The components that decide which image kinds a device needs, with the newest
// version of each.
using Installed = std::map<std::pair<std::string, std::string>, std::string>;

Installed findInstalled(const Fleet& fleet) {
    Installed installed;
    for (const Json& adapter : fleet.document["adapters"]) {
        for (const auto& [name, entry] : adapter["components"].items()) {
            const std::string version = componentText(entry, "version", "");
            std::string& newest = installed[{adapter["device"].get<std::string>(), name}];
            if (strverscmp(newest.c_str(), version.c_str()) < 0) {
                newest = version;
            }
        }
    }
    return installed;
}

void makeNewer() {
    for (const auto& [carrier, version] : findInstalled(loadFleet())) {
        const auto& [device, name] = carrier;
        for (const char* kind : {name.c_str(), name == "mba" ? "mbaf" : nullptr}) {
            if (kind != nullptr && imageNamed(kind) != nullptr) {
                const Image image = {device, kind, newerThan(version)};
                checkImage(image);
                replaceFile(image.device + image.component + ".bin", imageText(image));
            }
        }
    }
}

void run(int argc, char** argv) {
    if (argc == 2 && strcmp(argv[1], "--newer") == 0) {
        makeNewer();
    } else if (argc == 3 && strcmp(argv[1], "--list") == 0) {
        makeListed(argv[2]);
    } else if (argc == 3 && strcmp(argv[1], "--fleet") == 0) {
        makeFleet(argv[2]);
    } else if (argc == 4) {
        const Image image = {argv[1], argv[2], argv[3]};
        checkImage(image);
        if (fputs(imageText(image).c_str(), stdout) < 0 || fflush(stdout) != 0) {
            throw Failure(exitOutput, "the image can't be written");
        }
    } else {
        throw Failure(
            exitUsage,
            "usage: mkimage DEVICE COMPONENT VERSION | --list FILE | --fleet DIR | --newer");
    }
}

}  // namespace

}  // namespace emulator

int main(int argc, char** argv) {
    try {
        emulator::run(argc, argv);
        return 0;
    } catch (const emulator::Failure& failure) {
        fprintf(stderr, "mkimage: %s\n", failure.what());
        return failure.code;
    } catch (const std::exception& error) {
        fprintf(stderr, "mkimage: %s\n", error.what());
        return 1;
    }
}
