// What each kind of trouble means: cause, state of the adapters, next step.
#pragma once

#include <cstddef>
#include <string_view>

namespace report {

// What it adds to the steps that end a report.
enum Action : unsigned {
    actNothing = 0,
    actRepeat = 1U << 0U,   // run again as it was run
    actForce = 1U << 1U,    // run again, forced
    actReboot = 1U << 2U,   // before anything else is run
    actStayUp = 1U << 3U,   // no reboot before the next run
    actSupport = 1U << 4U,  // about the port
    actDriver = 1U << 5U,   // for the port
    actFine = 1U << 6U,     // makes no run a failed one
};

struct Advice {
    const char* kind = nullptr;  // a stable word for programs; null for no trouble
    const char* cause = "";
    const char* adapters = "";  // their state
    const char* next = "";
    unsigned actions = actNothing;
    const char* errand = nullptr;  // what a person is to do before the next run
};

// What the tool's manual page says of one text.
struct PageAdvice {
    const char* text;  // as in the table of lines
    const char* cause;
    const char* adapters;
    const char* next;
};

inline constexpr PageAdvice pageAdvice[] = {
#include "page_advice.inc"
};

// The advice for one of the tool's texts, in the words of its manual page. A text that the page
// doesn't explain does not compile.
constexpr Advice explained(std::string_view text, const char* kind, unsigned actions,
                           const char* errand = nullptr) {
    for (const PageAdvice& told : pageAdvice) {
        if (told.text == text) {
            return {kind, told.cause, told.adapters, told.next, actions, errand};
        }
    }
    throw "docs/zentrix.8 lacks this text under DIAGNOSTICS";
}

// What no line says, but the run as a whole.
enum class Matter {
    noBuildVersion,
    buildVersionLost,
    noEnd,
    headingAlone,
    refused,
    notRead,
    nothingWritten,
    sameAsBefore,
    noBlock,
    answersDiffer,
    unknownToLibrary,
    doubtful,
};

Advice adviceFor(Matter matter);

}  // namespace report
