// What a command says, held back until its effect is safe.
#pragma once

#include <string>

namespace emulator {

struct Console {
    std::string text;   // not printed yet
    bool held = false;  // a fault will change the text: keep even prompts back
};

// Prints what was said so far and reads one line of standard input. At the end
// of the input the answer is `atEnd`.
std::string ask(Console& console, const std::string& prompt, const std::string& atEnd);

// Prints the text and forgets it. Throws Failure(exitOutput).
void release(Console& console);

// What a fault's "output" makes of a text: "half" or "empty" of it, or
// "garbage" of any byte values. Anything else leaves it whole.
std::string distorted(const std::string& text, const std::string& output);

}  // namespace emulator
