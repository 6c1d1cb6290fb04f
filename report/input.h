// The logs that the arguments name, and their reading from disk.
#pragma once

#include <string>
#include <vector>

#include "run.h"

namespace report {

// A path of "-" is standard input.
struct Source {
    std::string path;
    std::string trouble;  // why there is nothing to read; empty when there is
};

// One source for a file, all kvlnfwup*.log for a directory in the order of
// their making, or only the newest of them.
std::vector<Source> findLogs(const std::vector<std::string>& arguments, bool newestOnly);

// False, with the reason in `trouble`, when the log can't be read or isn't one.
bool readLog(const std::string& path, Run& run, std::string& trouble);

}  // namespace report
