// Bytes to lines. A line may come in any number of pieces; what is held of it
// stays within lineLimit, however long it is.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

#include "line_feeds.h"

namespace report {

// Of a longer line the first and the last half of this is kept: the flash
// utility may print for ever without a line feed, and the tool's own text then
// stands behind it on the same line.
constexpr size_t lineLimit = 8192;

struct LineCutter {
    std::string held;   // the beginning of a line that isn't complete
    size_t number = 0;  // of the lines handed out so far
};

// Adds to the line that is held, and leaves out its middle where it gets too long.
void holdPiece(LineCutter& cutter, std::string_view piece);

// Calls `take(line, number)` for each line that `bytes` completes, without its
// line feed. The line lives until `take` returns; the first number is 1. Where a
// line begins, `skip(rest)` may say how many bytes of whole lines nobody needs.
template <typename Take, typename Skip>
void cutLines(LineCutter& cutter, std::string_view bytes, Take&& take, Skip&& skip) {
    while (!bytes.empty()) {
        if (const size_t skipped = cutter.held.empty() ? skip(bytes) : 0; skipped > 0) {
            cutter.number += countLineFeeds(bytes.substr(0, skipped));
            bytes.remove_prefix(skipped);
            continue;
        }
        const void* end = memchr(bytes.data(), '\n', bytes.size());
        if (end == nullptr) {
            holdPiece(cutter, bytes);
            return;
        }
        const size_t length = static_cast<size_t>(static_cast<const char*>(end) - bytes.data());
        cutter.number++;
        if (cutter.held.empty() && length <= lineLimit) {
            take(bytes.substr(0, length), cutter.number);
        } else {
            holdPiece(cutter, bytes.substr(0, length));
            take(std::string_view(cutter.held), cutter.number);
            cutter.held.clear();
        }
        bytes.remove_prefix(length + 1);
    }
}

template <typename Take>
void cutLines(LineCutter& cutter, std::string_view bytes, Take&& take) {
    cutLines(cutter, bytes, take, [](std::string_view) { return size_t{0}; });
}

// Hands out what stands behind the last line feed, if anything does.
template <typename Take>
void finishLines(LineCutter& cutter, Take&& take) {
    if (!cutter.held.empty()) {
        cutter.number++;
        take(std::string_view(cutter.held), cutter.number);
        cutter.held.clear();
    }
}

}  // namespace report
