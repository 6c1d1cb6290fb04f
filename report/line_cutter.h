// Bytes to lines. A line may come in any number of pieces; what is held of it
// stays within lineLimit, however long it is.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

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
inline void holdPiece(LineCutter& cutter, std::string_view piece) {
    constexpr size_t half = lineLimit / 2;
    if (piece.size() > lineLimit) {
        cutter.held.append(piece.substr(0, half));
        piece.remove_prefix(piece.size() - half);
    }
    cutter.held.append(piece);
    if (cutter.held.size() > lineLimit) {
        cutter.held.erase(half, cutter.held.size() - lineLimit);
    }
}

// Calls `take(line, number)` for each line that `bytes` completes, without its line
// feed. The line lives until `take` returns; the first number is 1.
template <typename Take>
void cutLines(LineCutter& cutter, std::string_view bytes, Take&& take) {
    for (size_t end = bytes.find('\n'); end != std::string_view::npos; end = bytes.find('\n')) {
        holdPiece(cutter, bytes.substr(0, end));
        bytes.remove_prefix(end + 1);
        take(std::string_view(cutter.held), ++cutter.number);
        cutter.held.clear();
    }
    holdPiece(cutter, bytes);
}

// Hands out what stands behind the last line feed, if anything does.
template <typename Take>
void finishLines(LineCutter& cutter, Take&& take) {
    if (!cutter.held.empty()) {
        take(std::string_view(cutter.held), ++cutter.number);
        cutter.held.clear();
    }
}

}  // namespace report
