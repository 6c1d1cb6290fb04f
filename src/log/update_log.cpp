#include "log/update_log.h"

#include <sys/stat.h>

#include <cstdarg>
#include <cstring>

#include "log/file_util.h"

namespace fwup {

uint8_t bSilent = 0;
char szFwuplog[50] = "kvlnfwup.log";

static const char* const logDirectoryChain[] = {"/var/", "/var/log/", "/var/log/Marvek_Support/"};
static const char* const logDirectory = "/var/log/Marvek_Support/";

static bool appendToLog(const char* text) {
    FILE* log = fopen(szFwuplog, "a+");
    if (log == nullptr) {
        return false;
    }
    // One text, one write: a buffer would only cost its allocation.
    setvbuf(log, nullptr, _IONBF, 0);
    const size_t length = strlen(text);
    const bool written = fwrite(text, 1, length, log) == length;
    return fclose(log) == 0 && written;
}

// Below the first directory that is missing, all the others are missing too.
static void makeLogDirectory() {
    bool missing = false;
    for (const char* directory : logDirectoryChain) {
        missing = missing || !fileExist(directory);
        if (missing && mkdir(directory, 0755) != 0) {
            return;
        }
    }
}

static void chooseLogName() {
    const char* directory = fileExist(logDirectory) ? logDirectory : "";
    snprintf(szFwuplog, sizeof szFwuplog, "%skvlnfwup.log", directory);
    for (int32_t counter = 1; fileExist(szFwuplog); counter++) {
        snprintf(szFwuplog, sizeof szFwuplog, "%skvlnfwup%03d.log", directory, counter);
    }
}

void initLogFile() {
    makeLogDirectory();
    chooseLogName();
    if (!appendToLog("Kelvane Firmware Update Log.\n\n") && bSilent != 1) {
        puts("Error! Unable to initialize log file.");
    }
}

void writetoLog(const char* text, bool echo) {
    if (text == nullptr) {
        return;
    }
    if (echo && bSilent != 1) {
        fputs(text, stdout);
    }
    if (!appendToLog(text) && bSilent != 1) {
        puts("Error! Unable to write to log file.");
    }
}

void writeMessage(bool echo, const char* format, ...) {
    char text[messageSize];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    writetoLog(text, echo);
}

void showMarker(const char* marker) {
    if (bSilent != 1) {
        puts(marker);
    }
}

void copyFileToLog(FILE* file, bool echo) {
    char piece[messageSize];
    while (fgets(piece, sizeof piece, file) != nullptr) {
        writetoLog(piece, echo);
    }
}

}  // namespace fwup
