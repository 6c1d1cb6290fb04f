// Makes firmware images for the virtual adapters.
//   mkimage DEVICE COMPONENT VERSION >FILE
//   mkimage --list FILE     for each line "DEVICE COMPONENT VERSION" of FILE,
//                           writes DEVICECOMPONENT.bin in the current directory
//   mkimage --fleet DIR     copies a ready fleet's adapters.json and
//                           BuildVersion.txt there, and makes what its
//                           images.list lists

#include <cstdio>
#include <cstring>
#include <exception>
#include <sstream>

#include "component.h"
#include "exit_code.h"
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

void run(int argc, char** argv) {
    if (argc == 3 && strcmp(argv[1], "--list") == 0) {
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
        throw Failure(exitUsage,
                      "usage: mkimage DEVICE COMPONENT VERSION | --list FILE | --fleet DIR");
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
