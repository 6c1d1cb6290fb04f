#include "input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <tuple>

#include "line_cutter.h"
#include "log_reader.h"
#include "text.h"

namespace report {

namespace fs = std::filesystem;

struct Candidate {
    std::string path;
    fs::file_time_type time;
};

static bool isLogName(const std::string& name) {
    return startsWith(name, "kvlnfwup") && endsWith(name, ".log");
}

// Logs of one moment go by their numbers, of which the shorter is the earlier.
static bool isOlder(const Candidate& a, const Candidate& b) {
    return std::make_tuple(a.time, a.path.size(), a.path) <
           std::make_tuple(b.time, b.path.size(), b.path);
}

static std::vector<Candidate> logsIn(const std::string& directory, std::error_code& error) {
    std::vector<Candidate> logs;
    for (fs::directory_iterator entry(directory, error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code unknown;
        if (isLogName(entry->path().filename().string())) {
            logs.push_back({entry->path().string(), entry->last_write_time(unknown)});
        }
    }
    std::sort(logs.begin(), logs.end(), isOlder);
    return logs;
}

static void addDirectory(const std::string& directory, bool newestOnly,
                         std::vector<Source>& sources) {
    std::error_code error;
    std::vector<Candidate> logs = logsIn(directory, error);
    if (error) {
        sources.push_back({directory, error.message()});
        return;
    }
    if (logs.empty()) {
        sources.push_back({directory, "no kvlnfwup*.log in this directory"});
    }
    if (newestOnly && !logs.empty()) {
        logs.erase(logs.begin(), logs.end() - 1);
    }
    for (const Candidate& log : logs) {
        sources.push_back({log.path, ""});
    }
}

std::vector<Source> findLogs(const std::vector<std::string>& arguments, bool newestOnly) {
    std::vector<Source> sources;
    for (const std::string& argument : arguments) {
        std::error_code error;
        if (argument != "-" && fs::is_directory(argument, error)) {
            addDirectory(argument, newestOnly, sources);
        } else {
            sources.push_back({argument, ""});
        }
    }
    return sources;
}

// False when reading fails; `errno` says why.
static bool readStream(int stream, LogReader& reader) {
    LineCutter cutter;
    std::string piece(size_t{1} << 16, '\0');
    for (;;) {
        const ssize_t length = read(stream, piece.data(), piece.size());
        if (length < 0 && errno != EINTR) {
            return false;
        }
        if (length == 0 || !reader.isLog || reader.secondHeading != 0) {
            readRest(reader, cutter);
            return true;
        }
        if (length > 0) {
            readBytes(reader, cutter, {piece.data(), static_cast<size_t>(length)});
        }
    }
}

bool readLog(const std::string& path, Run& run, std::string& trouble) {
    const bool standardInput = path == "-";
    const int stream = standardInput ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    LogReader reader;
    const bool complete = stream >= 0 && readStream(stream, reader);
    if (!complete) {
        trouble = strerror(errno);
    }
    if (stream >= 0 && !standardInput) {
        close(stream);
    }
    if (!complete) {
        return false;
    }
    if (reader.number == 0 || !reader.isLog) {
        trouble = reader.number == 0 ? "is empty" : "is not a log of zentrix";
        return false;
    }
    if (reader.secondHeading != 0) {
        trouble = "another log begins in line " + std::to_string(reader.secondHeading) +
                  ": each needs a file of its own";
        return false;
    }
    run = finishLog(reader);
    return true;
}

}  // namespace report
