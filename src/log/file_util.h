// Tests for files, below the log and the command runner.
#pragma once

#include <cstdio>

namespace fwup {

// True when `stat` succeeds on `path`, whatever kind of file it is.
bool fileExist(const char* path);

// True when `path` can be opened for reading.
bool file_exists(const char* path);

// True when the file `name` in /tmp/ can be opened for reading.
bool is_file_present(const char* name);

// Reads `file` in pieces of at most `size` - 1 characters, each a line or part
// of a longer one, until one contains `needle`; closes the file. True when
// `line` holds that piece, with its line feed. False, with `line` undefined,
// when there is none or the file is null.
bool findLineAndClose(FILE* file, const char* needle, char* line, int size);

}  // namespace fwup
