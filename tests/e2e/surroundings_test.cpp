// What the program makes of the machine and the process that it finds: names
// of logs, lost logs, streams and a signal that is ignored.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

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
        fs::remove("/package/lnxfwvt2");
        writeFile("/package/lnxfwvt2",
                  "#!/bin/sh\n: <&0 && : >&1 && : >&2 && exec /build/lnxfwvt2 \"$@\"\n");
        fs::permissions("/package/lnxfwvt2", fs::perms::owner_all);
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

}  // namespace e2e
