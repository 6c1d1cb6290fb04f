// Tests for files, below the log and the command runner.
#pragma once

namespace fwup {

// True when `stat` succeeds on `path`, whatever kind of file it is.
bool fileExist(const char* path);

// True when `path` can be opened for reading.
bool file_exists(const char* path);

// True when the file `name` in /tmp/ can be opened for reading.
bool is_file_present(const char* name);

}  // namespace fwup
