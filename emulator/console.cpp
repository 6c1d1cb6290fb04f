#include "console.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iostream>

#include "exit_code.h"

namespace emulator {

std::string ask(Console& console, const std::string& prompt, const std::string& atEnd) {
    console.text += prompt;
    if (!console.held) {
        release(console);
    }
    std::string answer;
    const bool answered = static_cast<bool>(std::getline(std::cin, answer));
    console.text += "\n";
    return answered ? answer : atEnd;
}

void release(Console& console) {
    const size_t written = fwrite(console.text.data(), 1, console.text.size(), stdout);
    if (written != console.text.size() || fflush(stdout) != 0) {
        throw Failure(exitOutput, std::string("the answer can't be written: ") + strerror(errno));
    }
    console.text.clear();
}

std::string distorted(const std::string& text, const std::string& output) {
    if (output == "empty") {
        return "";
    }
    if (output == "half") {
        return text.substr(0, text.size() / 2);
    }
    if (output == "garbage") {
        // The same bytes each time, so that a run with garbage can be repeated.
        uint32_t state = 1;
        std::string bytes(4096, '\0');
        for (char& byte : bytes) {
            state = state * 1103515245U + 12345U;
            byte = static_cast<char>(state >> 24);
        }
        return bytes;
    }
    return text;
}

}  // namespace emulator
