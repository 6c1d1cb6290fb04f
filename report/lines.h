// The lines that the tool itself writes to its log, each with what it does to what is known of
// the run, and with its advice.
#pragma once

#include <cstddef>
#include <string_view>

#include "reader_state.h"
#include "text.h"

namespace report {

struct ToolLine;

struct Line {
    const char* text;
    void (*effect)(LogReader&, const ToolLine&);
    Awaited outcomeOf = Awaited::nothing;
    Advice advice = {};
};

struct ToolLine {
    Line line = {"", nullptr};
    std::string_view text;               // without the blanks around it; empty when it is none
    std::string_view fields[maxFields];  // what stood in angle brackets, in order
};

// The first line of each log.
constexpr const char* heading = "Kelvane Firmware Update Log.";

// What a line is, judged by its text alone. The fields point into `line`.
ToolLine readToolLine(std::string_view line);

// Whether it shows that a port's directory begins, or that there is none.
bool isOfDirectory(const ToolLine& line);

// Takes a line outside of all quotes.
void obey(LogReader& reader, std::string_view line);

// The table, for those who compare it.
extern const Line* const lines;
extern const size_t lineCount;

}  // namespace report
