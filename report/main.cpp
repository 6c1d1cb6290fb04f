// zentrix-report: what runs did, from their logs.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "data.h"
#include "input.h"
#include "screen.h"
#include "summary.h"
#include "text.h"

namespace report {

enum ExitStatus {
    exitClean = 0,
    exitLeftToDo = 1,
    exitUnreadable = 2,
    exitUsage = 64,
};

struct Options {
    std::vector<std::string> logs;
    std::string output;
    bool json = false;
    bool newest = false;
};

static void sayTrouble(const std::string& path, const std::string& trouble) {
    fprintf(stderr, "zentrix-report: %s: %s\n", plainText(path).c_str(), trouble.c_str());
}

// What the reports of all logs come to.
struct Result {
    Json runs = Json::array();
    std::string screen;
    History history;
    std::map<std::string, History> withoutPorts;  // by their directories
    bool unreadable = false;
    bool leftToDo = false;
};

static void addLog(const Options& options, bool colour, const Source& source, Result& result) {
    Run run;
    std::string trouble = source.trouble;
    if (!trouble.empty() || !readLog(source.path, run, trouble)) {
        sayTrouble(source.path, trouble);
        result.unreadable = true;
        return;
    }
    const std::string directory = std::filesystem::path(source.path).parent_path();
    History& history = run.macs.empty() ? result.withoutPorts[directory] : result.history;
    const Summary summary = summarize(run, &history);
    const std::string path = plainText(source.path);
    result.leftToDo = result.leftToDo || summary.outcome != Outcome::clean || !summary.next.empty();
    if (options.json) {
        result.runs.push_back(toData(path, run, summary));
    } else {
        result.screen += (result.screen.empty() ? "" : "\n") + toScreen(path, run, summary, colour);
    }
}

static bool writeText(const std::string& path, const std::string& text) {
    FILE* file = path.empty() ? stdout : fopen(path.c_str(), "w");
    if (file == nullptr) {
        return false;
    }
    const bool written = fwrite(text.data(), 1, text.size(), file) == text.size();
    return (path.empty() ? fflush(file) : fclose(file)) == 0 && written;
}

static bool writeOutput(const Options& options, const std::string& text) {
    if (!writeText(options.output, text)) {
        sayTrouble(options.output.empty() ? "standard output" : options.output,
                   "cannot be written");
        return false;
    }
    return true;
}

static ExitStatus makeReport(const Options& options) {
    const bool colour =
        options.output.empty() && isatty(STDOUT_FILENO) != 0 && getenv("NO_COLOR") == nullptr;
    Result result;
    for (const Source& source : findLogs(options.logs, options.newest)) {
        addLog(options, colour, source, result);
    }
    const std::string text = options.json ? dumpData(result.runs) : result.screen;
    if (!writeOutput(options, text) || result.unreadable) {
        return exitUnreadable;
    }
    return result.leftToDo ? exitLeftToDo : exitClean;
}

static ExitStatus run(int argc, char** argv) {
    Options options;
    CLI::App app("Says what runs of zentrix did, from their logs.", "zentrix-report");
    app.add_option("LOG", options.logs, "a log, a directory of logs, or - for standard input")
        ->required();
    app.add_flag("--json", options.json, "write data instead of a screen");
    app.add_flag("--newest", options.newest, "of each directory, the newest log only");
    app.add_option("--output", options.output, "write to this file")->type_name("FILE");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? exitClean : exitUsage;
    }
    return makeReport(options);
}

}  // namespace report

int main(int argc, char** argv) {
    try {
        return report::run(argc, argv);
    } catch (const std::exception& error) {
        fprintf(stderr, "zentrix-report: %s\n", report::plainText(error.what()).c_str());
        return report::exitUnreadable;
    }
}
