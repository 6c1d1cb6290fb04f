#include "text.h"

#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace emulator {

std::string format(const char* pattern, ...) {
    va_list arguments;
    va_start(arguments, pattern);
    char* buffer = nullptr;
    const int length = vasprintf(&buffer, pattern, arguments);
    va_end(arguments);
    if (length < 0) {
        throw std::bad_alloc();
    }
    std::string text(buffer, static_cast<size_t>(length));
    free(buffer);
    return text;
}

bool sameText(std::string_view a, std::string_view b) {
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

bool isHex(std::string_view text, size_t least, size_t most) {
    return text.size() >= least && text.size() <= most &&
           std::all_of(text.begin(), text.end(),
                       [](unsigned char c) { return std::isxdigit(c) != 0; });
}

std::string readFile(const std::string& path, ExitCode code) {
    FILE* file = fopen(path.c_str(), "rb");
    std::string content;
    char piece[8192];
    size_t length = 0;
    while (file != nullptr && (length = fread(piece, 1, sizeof piece, file)) > 0) {
        content.append(piece, length);
    }
    const bool failed = file == nullptr || ferror(file) != 0;
    const int error = errno;
    if (file != nullptr) {
        fclose(file);
    }
    if (failed) {
        throw Failure(code, path + ": " + strerror(error));
    }
    return content;
}

namespace {

bool writeAll(int file, const std::string& content) {
    size_t written = 0;
    while (written < content.size()) {
        const ssize_t step = write(file, content.data() + written, content.size() - written);
        if (step < 0) {
            return false;
        }
        written += static_cast<size_t>(step);
    }
    return true;
}

}  // namespace

void replaceFile(const std::string& path, const std::string& content) {
    std::string temporary = path + ".XXXXXX";
    const int file = mkstemp(temporary.data());
    bool done = file >= 0;
    if (done) {
        struct stat old = {};
        const mode_t mode = stat(path.c_str(), &old) == 0 ? old.st_mode & 07777 : 0644;
        done = fchmod(file, mode) == 0 && writeAll(file, content);
        done = close(file) == 0 && done;
        done = done && rename(temporary.c_str(), path.c_str()) == 0;
    }
    if (!done) {
        const int error = errno;
        if (file >= 0) {
            unlink(temporary.c_str());
        }
        throw Failure(exitFleet, path + " can't be saved: " + strerror(error));
    }
}

}  // namespace emulator
