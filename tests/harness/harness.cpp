#include "harness.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>

namespace e2e {

namespace fs = std::filesystem;

// Long enough for the slowest build on a busy machine.
static const std::chrono::seconds runLimit(120);
static const std::string statePath = "/state/adapters.json";

static void demand(bool done, const std::string& what) {
    if (!done) {
        throw std::runtime_error(what + ": " + strerror(errno));
    }
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

void writeFile(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text << std::flush;
    demand(static_cast<bool>(file), path);
}

bool isSandboxed() {
    const bool sandboxed = fs::exists("/.sandbox");
    if (!sandboxed) {
        fputs("Nothing was run: this belongs inside script/sandbox (see tests/CMakeLists.txt).\n",
              stderr);
    }
    return sandboxed;
}

bool canMount() {
    static const bool able =
        mount("e2e", "/root", "tmpfs", MS_NOSUID | MS_NODEV, nullptr) == 0 && umount("/root") == 0;
    return able;
}

// Ends with what `program` ends with; 126 when it can't be started.
static pid_t startProgram(const std::string& program, const Texts& arguments, int output,
                          const std::function<void()>& prepare) {
    std::vector<char*> argv = {const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    const pid_t child = fork();
    demand(child >= 0, "fork");
    if (child != 0) {
        return child;
    }
    setpgid(0, 0);
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    setenv("LD_LIBRARY_PATH", "/build", 1);
    if (chdir(packageDirectory.c_str()) == 0) {
        if (prepare) {
            prepare();
        }
        execv(program.c_str(), argv.data());
    }
    _exit(126);
}

// What comes from `input` until nobody can write there any more. False when
// that takes too long.
static bool readAll(int input, std::string& text) {
    const auto end = std::chrono::steady_clock::now() + runLimit;
    char piece[65536];
    for (;;) {
        pollfd ready = {input, POLLIN, 0};
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            end - std::chrono::steady_clock::now());
        if (left.count() <= 0 || poll(&ready, 1, static_cast<int>(left.count())) <= 0) {
            return false;
        }
        const ssize_t length = read(input, piece, sizeof piece);
        if (length <= 0) {
            return length == 0;
        }
        text.append(piece, static_cast<size_t>(length));
    }
}

int awaitEnd(pid_t process) {
    int status = 0;
    demand(waitpid(process, &status, 0) == process, "waitpid");
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

static int runProgram(const std::string& program, const Texts& arguments, std::string& console,
                      const std::function<void()>& prepare) {
    int ends[2];
    demand(pipe2(ends, O_CLOEXEC) == 0, "pipe");
    const pid_t child = startProgram(program, arguments, ends[1], prepare);
    close(ends[1]);
    const bool ended = readAll(ends[0], console);
    close(ends[0]);
    if (!ended) {
        kill(-child, SIGKILL);
    }
    const int status = awaitEnd(child);
    return ended ? status : neverEnded;
}

static void mountFresh(const std::string& directory) {
    fs::create_directories(directory);
    demand(mount("e2e", directory.c_str(), "tmpfs", MS_NOSUID | MS_NODEV, "size=8m") == 0,
           "mount " + directory);
}

static void emptyMachine() {
    for (const std::string& directory : {packageDirectory, logDirectory}) {
        while (umount2(directory.c_str(), MNT_DETACH) == 0) {
        }
    }
    for (const char* directory : {"/package", "/state", "/var"}) {
        fs::remove_all(directory);
    }
    for (const fs::directory_entry& entry : fs::directory_iterator("/tmp")) {
        fs::remove_all(entry);
    }
    fs::create_directories("/state");
    fs::create_directories("/var/log");
}

void makePackage(const std::string& fleet) {
    emptyMachine();
    fs::create_directories(packageDirectory);
    if (canMount()) {
        mountFresh(packageDirectory);
    }
    std::string words;
    if (runProgram("/build/mkimage", {"--fleet", "/fleets/" + fleet}, words, {}) != 0) {
        throw std::runtime_error("no fleet: " + words);
    }
    fs::copy_file(packageDirectory + "/adapters.json", statePath);
    fs::remove(packageDirectory + "/adapters.json");
    fs::create_symlink(statePath, packageDirectory + "/adapters.json");
    for (const char* program : {"zentrix", "lnxfwvt2"}) {
        fs::create_symlink(std::string("/build/") + program, packageDirectory + "/" + program);
    }
}

Json readAdapters() {
    return Json::parse(readFile(statePath));
}

void writeAdapters(const Json& adapters) {
    writeFile(statePath, adapters.dump(2) + "\n");
}

void editAdapters(const Json& edits) {
    Json adapters = readAdapters();
    for (const auto& [pointer, value] : edits.items()) {
        adapters[Json::json_pointer(pointer)] = value;
    }
    writeAdapters(adapters);
}

void makeReadOnly(const std::string& directory) {
    if (directory != packageDirectory) {
        mountFresh(directory);
    }
    const unsigned long flags = MS_REMOUNT | MS_RDONLY | MS_NOSUID | MS_NODEV;
    demand(mount("e2e", directory.c_str(), "tmpfs", flags, nullptr) == 0, "remount " + directory);
}

void fillUp(const std::string& directory) {
    if (directory != packageDirectory) {
        mountFresh(directory);
    }
    const int filler = open((directory + "/filler").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    demand(filler >= 0, "filler");
    const std::string piece(4096, 'x');
    while (write(filler, piece.data(), piece.size()) > 0) {
    }
    close(filler);
}

static std::set<std::string> namesIn(const std::string& directory) {
    std::set<std::string> names;
    std::error_code missing;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory, missing)) {
        names.insert(entry.path().filename());
    }
    return names;
}

static bool isLogName(const std::string& name) {
    return name.compare(0, 8, "kvlnfwup") == 0;
}

static Texts readCommands(const std::string& log) {
    static const std::string before = "\nAbout to execute: \"";
    Texts commands;
    size_t at = 0;
    while ((at = log.find(before, at)) != std::string::npos) {
        at += before.size();
        commands.push_back(log.substr(at, log.find("\"\n", at) - at));
    }
    return commands;
}

std::string takeOutcome(const std::string& text, const std::string& command, size_t& at) {
    const std::string quoted = '"' + command + '"';
    const size_t from = std::min(text.find("Command " + quoted + " returned code: ", at),
                                 text.find("Skipping command: " + quoted, at));
    if (from == std::string::npos) {
        return "";
    }
    at = text.find('\n', from + quoted.size() + sizeof "Command ");
    return text.substr(from, at - from);
}

pid_t startRun(const Texts& arguments, int output) {
    return startProgram("./zentrix", arguments, output, {});
}

Result run(const Texts& arguments, const std::function<void()>& prepare) {
    const std::set<std::string> oldFiles = namesIn(packageDirectory);
    const std::set<std::string> oldLogs = namesIn(logDirectory);
    Result result;
    result.status = runProgram("./zentrix", arguments, result.console, prepare);
    for (const std::string& name : namesIn(packageDirectory)) {
        if (oldFiles.count(name) == 0 && isLogName(name)) {
            result.logPath = name;
        } else if (oldFiles.count(name) == 0) {
            result.files.push_back(name);
        }
    }
    for (const std::string& name : namesIn(logDirectory)) {
        if (oldLogs.count(name) == 0 && isLogName(name)) {
            result.logPath = logDirectory + "/" + name;
        }
    }
    if (!result.logPath.empty()) {
        result.log = readFile(fs::path(packageDirectory) / result.logPath);
        result.commands = readCommands(result.log);
    }
    return result;
}

}  // namespace e2e
