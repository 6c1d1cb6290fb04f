#include "run/lock_holder.h"

#include <dirent.h>
#include <sys/stat.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>

#include "log/file_util.h"

namespace fwup {

// What is opened below /proc/NUMBER: no process's name gets into a path.
using Path = char[64];

// The next entry whose name is a number; -1 when there is none.
static int nextNumber(DIR* entries) {
    const dirent* entry = nullptr;
    do {
        entry = readdir(entries);  // cppcheck-suppress readdirCalled ; there is one thread
    } while (entry != nullptr && isdigit(static_cast<unsigned char>(entry->d_name[0])) == 0);
    return entry == nullptr ? -1 : static_cast<int>(strtol(entry->d_name, nullptr, 10));
}

// The kernel lists a lock with every file that it came by, inherited ones too. Of other files
// nothing is asked: on a network file system that is gone the answer wouldn't come.
static bool locksBy(int process, int descriptor, const struct stat& directory) {
    Path path;
    snprintf(path, sizeof path, "/proc/%d/fdinfo/%d", process, descriptor);
    char line[128];
    if (!findLineAndClose(fopen(path, "re"), "FLOCK", line, sizeof line)) {
        return false;
    }
    snprintf(path, sizeof path, "/proc/%d/fd/%d", process, descriptor);
    struct stat status;
    return stat(path, &status) == 0 && status.st_dev == directory.st_dev &&
           status.st_ino == directory.st_ino;
}

static bool holdsLock(int process, const struct stat& directory) {
    Path path;
    snprintf(path, sizeof path, "/proc/%d/fdinfo", process);
    DIR* descriptors = opendir(path);
    if (descriptors == nullptr) {
        return false;
    }
    int descriptor = nextNumber(descriptors);
    while (descriptor >= 0 && !locksBy(process, descriptor, directory)) {
        descriptor = nextNumber(descriptors);
    }
    closedir(descriptors);
    return descriptor >= 0;
}

// Processes choose their names: what could steer a terminal is left out.
static void printProcess(int process) {
    Path path;
    snprintf(path, sizeof path, "/proc/%d/comm", process);
    char name[32] = "";
    findLineAndClose(fopen(path, "re"), "", name, sizeof name);
    fprintf(stderr, "%d (", process);
    for (const char* c = name; *c != '\0'; c++) {
        if (isprint(static_cast<unsigned char>(*c)) != 0) {
            fputc(*c, stderr);
        }
    }
    fputc(')', stderr);
}

void nameLockHolders(int directory) {
    struct stat wanted;
    if (fstat(directory, &wanted) != 0) {
        return;
    }
    DIR* processes = opendir("/proc");
    if (processes == nullptr) {
        return;
    }
    const char* before = "Held by process ";
    for (int process = nextNumber(processes); process >= 0; process = nextNumber(processes)) {
        if (holdsLock(process, wanted)) {
            fputs(before, stderr);
            printProcess(process);
            before = ", ";
        }
    }
    closedir(processes);
    fputs(*before == ',' ? ".\n" : "", stderr);
}

}  // namespace fwup
