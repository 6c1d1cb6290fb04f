// What the program makes of the machine and the process that it finds: names of logs, lost logs,
// streams, a signal that is ignored, and another run in its directory.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

#include "support.h"

namespace e2e {

namespace fs = std::filesystem;

static const std::string logBase = logDirectory + "/kvlnfwup";

// Takes the first `count` names of logs.
static void takeLogNames(const std::string& base, int count) {
    fs::create_directories(fs::path(base).parent_path());
    writeFile(base + ".log", "taken");
    for (int i = 1; i < count; i++) {
        char number[16];
        snprintf(number, sizeof number, "%03d", i);
        writeFile(base + number + ".log", "taken");
    }
}

TEST(Log, Names) {
    struct Case {
        void (*arrange)();
        std::string logPath;
    };
    const Case cases[] = {
        {[] {}, logBase + ".log"},
        {[] { fs::remove_all("/var/log"); }, logBase + ".log"},
        {[] { takeLogNames(logBase, 1); }, logBase + "001.log"},
        {[] { takeLogNames(logBase, 2); }, logBase + "002.log"},
        {[] { takeLogNames(logBase, 3), fs::remove(logBase + "001.log"); }, logBase + "001.log"},
        {[] { takeLogNames(logBase, 99); }, logBase + "099.log"},
        {[] { takeLogNames(logBase, 100); }, logBase + "100.log"},
        {[] { takeLogNames(logBase, 1000); }, logBase + "1000.log"},
        {[] { fs::create_directories(logBase + ".log"); }, logBase + "001.log"},
        // Where there can be no log directory, the current one serves.
        {[] { writeFile(logDirectory, ""); }, "kvlnfwup.log"},
        {[] { fs::remove_all("/var"), writeFile("/var", ""); }, "kvlnfwup.log"},
        {[] { writeFile(logDirectory, ""), takeLogNames("/package/kvlnfwup", 101); },
         "kvlnfwup101.log"},
    };
    for (const Case& c : cases) {
        makePackage("one");
        c.arrange();
        const Result result = checkedRun({"-?"});
        EXPECT_EQ(result.logPath, c.logPath);
        EXPECT_EQ(result.log, header);
    }
}

TEST(Log, IsNobodyElsesToWriteWhateverTheUmask) {
    makePackage("one");
    fs::remove_all("/var");
    EXPECT_EQ(watchedRun({"-?"}, [] { umask(0); }).logPath, logBase + ".log");
    EXPECT_EQ(fs::status(logBase + ".log").permissions(), static_cast<fs::perms>(0644));
    for (const char* directory : {"/var", "/var/log", "/var/log/Marvek_Support"}) {
        EXPECT_EQ(fs::status(directory).permissions(), static_cast<fs::perms>(0755)) << directory;
    }
}

// What can't be logged is not flashed, and the run tells.
TEST(Log, CannotBeWritten) {
    if (!canMount()) {
        GTEST_SKIP() << "nothing can be mounted here";
    }
    const std::string lost = "Error! Unable to write to log file.\n";
    const std::string start = "Error! Unable to initialize log file.\n";
    void (*const spoilers[])(const std::string&) = {makeReadOnly, fillUp};
    for (const auto spoil : spoilers) {
        makePackage("one");
        spoil(logDirectory);
        const Result loud = watchedRun({});
        EXPECT_EQ(loud.status, 1);
        EXPECT_EQ(loud.console.find(start + "Marvek Ethernet"), 0U);
        EXPECT_TRUE(
            hasInOrder(loud.console, {"Version " ZENTRIX_VERSION "\n\n" + lost, "Okay\n" + lost,
                                      "\t---> failed\n", "3C01bc.bin" + lost}));
        EXPECT_EQ(loud.console.find("Update successful"), std::string::npos);
        EXPECT_EQ(loud.files, Texts{});
        const Json components = readAdapters()["adapters"][0]["components"];
        EXPECT_EQ(components["bc"], spoil == fillUp ? "7.12.5" : "7.10.4");

        const Result silent = watchedRun({"-s"});
        EXPECT_EQ(silent.status, 1);
        EXPECT_EQ(silent.console.find(start + "Command"), 0U);
        EXPECT_EQ(silent.console.find(lost), std::string::npos);
    }
}

static void replaceUtility(const std::string& script) {
    const std::string path = packageDirectory + "/lnxfwvt2";
    fs::remove(path);
    writeFile(path, "#!/bin/sh\n" + script + " exec /build/lnxfwvt2 \"$@\"\n");
    fs::permissions(path, fs::perms::owner_all);
}

// What must go like a run that nothing happened to.
struct Compared : testing::Test {
    Compared() {
        makePackage("one");
        alone = checkedRun();
        updated = readAdapters()["adapters"];
        makePackage("one");
    }
    Result alone;
    Json updated;  // the adapters after it
};

// No text of the console may land in a file that takes a closed stream's place, the utility gets
// its streams, and a console that nobody reads ends no run.
using Undisturbed = Compared;

TEST_F(Undisturbed, ByClosedStreamsAndABrokenPipe) {
    void (*const preparations[])() = {
        [] { close(STDOUT_FILENO); },
        [] { close(STDOUT_FILENO), close(STDERR_FILENO); },
        [] { close(STDIN_FILENO), close(STDOUT_FILENO); },
        [] {
            int ends[2];
            if (pipe(ends) == 0) {
                dup2(ends[1], STDOUT_FILENO);
                close(ends[0]);
                close(ends[1]);
            }
        },
    };
    for (const auto prepare : preparations) {
        makePackage("one");
        replaceUtility(": <&0 && : >&1 && : >&2 &&");
        const Result result = watchedRun({}, prepare);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.console, "");
        EXPECT_EQ(result.log, alone.log);
        EXPECT_EQ(result.files, Texts{});
        EXPECT_EQ(readAdapters()["adapters"], updated);
    }
}

// A parent that ignores SIGCHLD must not turn a failed flash into a success.
TEST(Process, ChildSignalIgnored) {
    makePackage("one");
    writeFile("/package/3C01bc.bin", "no image");
    const Result result = watchedRun({}, [] { signal(SIGCHLD, SIG_IGN); });
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(hasInOrder(result.log, {"3C01bc.bin nv.bak >>", "\" returned code: 5\n"}));
}

static const std::string waits =
    "Another run is under way in this directory, or its flash utility still works. Waiting for it to end (Ctrl-C gives up).\n";

// A run beside the test's own, its console in a file.
struct OtherRun {
    explicit OtherRun(const char* consolePath, const Texts& arguments = {}) : path(consolePath) {
        const int console = open(consolePath, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        process = startRun(arguments, console);
        close(console);
    }
    // With it goes what it started, which would write to the next test's adapters.
    ~OtherRun() {
        kill(-process, SIGKILL);
    }
    std::string console() const {
        return readFile(path);
    }
    // Waits until it has said all of these; false when it never does.
    bool says(const Texts& parts) const {
        for (int i = 0; i < 6000 && !hasInOrder(console(), parts); i++) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return hasInOrder(console(), parts);
    }
    int end(int signalNumber = 0) const {
        kill(process, signalNumber);
        return awaitEnd(process);
    }
    const std::string path;
    pid_t process;
};

// As another run holds it.
struct Lock {
    explicit Lock(const std::string& directory) : descriptor(open(directory.c_str(), O_CLOEXEC)) {
        EXPECT_EQ(flock(descriptor, LOCK_EX | LOCK_NB), 0) << directory;
    }
    ~Lock() {
        close(descriptor);
    }
    const int descriptor;
};

// The first flash is held up until the end of this.
struct Hold {
    Hold() {
        replaceUtility(
            "case $* in *upgrade*) [ ! -p /state/hold ] || read -r word </state/hold ;; esac;");
        EXPECT_EQ(mkfifo("/state/hold", 0600), 0);
    }
    // Returns when there is a flash.
    void awaitFlash() {
        descriptor = open("/state/hold", O_WRONLY | O_CLOEXEC);
    }
    void end() const {
        fs::remove("/state/hold");
        close(descriptor);
    }
    int descriptor = -1;
};

// Two runs in one directory: the second waits until the first has ended, however it did.
using Turn = Compared;

TEST_F(Turn, SecondRunFollowsTheFirst) {
    Hold hold;
    const OtherRun first("/state/first");
    hold.awaitFlash();
    const OtherRun second("/state/second");
    ASSERT_TRUE(second.says({waits}));
    hold.end();
    EXPECT_EQ(first.end(), 0);
    EXPECT_EQ(second.end(), 0);
    EXPECT_EQ(first.console(), alone.console);
    EXPECT_EQ(readFile(logDirectory + "/kvlnfwup.log"), alone.log);
    EXPECT_TRUE(fs::exists(logDirectory + "/kvlnfwup001.log"));
    EXPECT_EQ(readAdapters()["adapters"], updated);
}

// What the dead run left behind holds the lock: had the next run not waited, it would have shown
// the version that the adapter had before.
TEST_F(Turn, UtilityOfAKilledRunIsWaitedFor) {
    Hold hold;
    const OtherRun first("/state/first");
    hold.awaitFlash();
    EXPECT_EQ(first.end(SIGKILL), 128 + SIGKILL);
    const OtherRun second("/state/second", {"-v"});
    Texts told = {waits};
    if (fs::exists("/proc/self")) {
        told.insert(told.end(), {"Held by process ", " (sh), ", " (lnxfwvt2).\n"});
    }
    ASSERT_TRUE(second.says(told));
    hold.end();
    EXPECT_EQ(second.end(), 0);
    EXPECT_TRUE(hasInOrder(second.console(), {"BOOT", updated[0]["components"]["bc"]}));
}

TEST_F(Turn, UntilThenItHasTouchedNothingAndCtrlCEndsIt) {
    const Lock lock(packageDirectory);
    for (const int signalNumber : {SIGINT, SIGTERM}) {
        const OtherRun waiting("/state/waiting");
        EXPECT_TRUE(waiting.says({waits}));
        EXPECT_EQ(waiting.end(signalNumber), 128 + signalNumber);
        EXPECT_FALSE(fs::exists(logDirectory));
    }
    EXPECT_EQ(run({"-?"}).status, 0);
    EXPECT_EQ(run({"-nonsense"}).status, 1);
}

TEST_F(Turn, NobodyWaitsForAnotherDirectory) {
    const Lock lock("/state");
    EXPECT_EQ(run({}).console, alone.console);
}

}  // namespace e2e
