// The line in which the flash utility shows a card's VPD-V0 field:
// "VPD (V0):" followed by the value. Text only.
#pragma once

namespace fwup {

// Room for the part of the line that counts: its first 63 characters.
constexpr int stampValueSize = 64;

// What makes a line the stamp's, anywhere and in this case.
inline constexpr char stampMarker[] = "VPD (V0):";

// Copies the second of the line's fields between colons, trimmed, into `value`
// (stampValueSize bytes). Runs of colons separate once. False when there is no
// second field.
bool readStampValue(const char* line, char* value);

}  // namespace fwup
