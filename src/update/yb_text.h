// The one value that the VPD field YB of certain OEM adapters must hold, and
// the texts made of it. Text only.
#pragma once

#include <cstddef>

namespace fwup {

// Room for any of the texts: 77 bytes of five characters and what stands
// around them.
constexpr size_t ybTextSize = 512;

// The line in which the utility shows the right value: "VPD (YB):" and the
// bytes in hexadecimal without leading zeros, 323 characters.
void formatYbLine(char (&line)[ybTextSize]);

// The bytes alone, each with at least `digits` (1 or 2) digits, separated by
// blanks, as the utility takes them.
void formatYbValue(char (&value)[ybTextSize], int digits);

}  // namespace fwup
