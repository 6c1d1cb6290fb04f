#include "line_cutter.h"

namespace report {

void holdPiece(LineCutter& cutter, std::string_view piece) {
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

}  // namespace report
