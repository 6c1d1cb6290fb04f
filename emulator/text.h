// Small text helpers that the stand-ins share.
#pragma once

#include <string>
#include <string_view>

#include "exit_code.h"

namespace emulator {

// printf into a string.
std::string format(const char* pattern, ...) __attribute__((format(printf, 1, 2)));

// Equal, the case of ASCII letters aside.
bool sameText(std::string_view a, std::string_view b);

// True for `least` to `most` hexadecimal digits and nothing else.
bool isHex(std::string_view text, size_t least, size_t most);

// Whole content of a file. Throws Failure with `code` when it can't be read.
std::string readFile(const std::string& path, ExitCode code);

// Replaces a file in one step: readers see the old content or the new, and on
// failure the old stays. Keeps the permissions. Throws Failure(exitFleet).
void replaceFile(const std::string& path, const std::string& content);

}  // namespace emulator
