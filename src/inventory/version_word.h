// The version in a line of the utility's directory: the word after the last
// blank, "-", "v", "X", "W" or "I", since versions stand last on their lines.
#pragma once

#include <cstddef>

namespace fwup {

// The version word of `line`, in place and not terminated, with its length.
// Null when the line has no delimiter, or only white space after the last one.
const char* findVersionWord(const char* line, size_t* length);

// Replaces `line` with its version word; a line without one stays as it is.
// Always true.
bool parseForVersion(char* line);

}  // namespace fwup
