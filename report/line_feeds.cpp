#include "line_feeds.h"

#include <cstdint>

namespace report {

// In pieces that a byte can count, so that the compiler compares sixteen at once.
size_t countLineFeeds(std::string_view bytes) {
    constexpr size_t pieceSize = 240;
    size_t total = 0;
    while (!bytes.empty()) {
        const std::string_view piece = bytes.substr(0, pieceSize);
        uint8_t count = 0;
        for (const char c : piece) {
            count = static_cast<uint8_t>(count + (c == '\n'));
        }
        total += count;
        bytes.remove_prefix(piece.size());
    }
    return total;
}

}  // namespace report
