// Two runs in one directory: the second waits until the first has ended, however it did.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <thread>

#include "support.h"

namespace e2e {

namespace fs = std::filesystem;

static const std::string waits =
    "Another run is under way in this directory, or its flash utility still works. Waiting for it to end (Ctrl-C gives up).\n";

static bool comesTrue(const std::function<bool()>& condition) {
    for (int i = 0; i < 6000 && !condition(); i++) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return condition();
}

// A run beside the test's own, its console in a file.
struct OtherRun {
    explicit OtherRun(const std::string& consolePath, const char* option = nullptr)
        : process(fork()) {
        if (process == 0) {
            setpgid(0, 0);
            setenv("LD_LIBRARY_PATH", "/build", 1);
            const int console = open(consolePath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            dup2(console, STDOUT_FILENO);
            dup2(console, STDERR_FILENO);
            if (chdir(packageDirectory.c_str()) == 0) {
                execl("./zentrix", "./zentrix", option, nullptr);
            }
            _exit(126);
        }
    }
    // With it goes what it started, which would write to the next test's adapters.
    ~OtherRun() {
        kill(-process, SIGKILL);
    }
    // As a shell gives it.
    int end(int signalNumber = 0) const {
        int status = 0;
        if (signalNumber != 0) {
            kill(process, signalNumber);
        }
        waitpid(process, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    const pid_t process;
};

static size_t countLogs() {
    std::error_code missing;
    return static_cast<size_t>(
        std::distance(fs::directory_iterator(logDirectory, missing), fs::directory_iterator()));
}

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

using Turn = Compared;

// The first flash is held up until the end of this.
struct Hold {
    Hold() {
        const std::string utility = packageDirectory + "/lnxfwvt2";
        fs::remove(utility);
        writeFile(utility,
                  "#!/bin/sh\ncase $* in *upgrade*) [ ! -p /state/hold ] || read -r word "
                  "</state/hold ;; esac\nexec /build/lnxfwvt2 \"$@\"\n");
        fs::permissions(utility, fs::perms(0755));
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

TEST_F(Turn, SecondRunFollowsTheFirst) {
    Hold hold;
    const OtherRun first("/state/first");
    hold.awaitFlash();
    const OtherRun second("/state/second");
    ASSERT_TRUE(comesTrue([] { return readFile("/state/second").find(waits) == 0; }));
    hold.end();
    EXPECT_EQ(first.end(), 0);
    EXPECT_EQ(second.end(), 0);
    EXPECT_EQ(readFile("/state/first"), alone.console);
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
    const OtherRun second("/state/second", "-v");
    Texts told = {waits};
    if (fs::exists("/proc/self")) {
        told.insert(told.end(), {"Held by process ", " (sh), ", " (lnxfwvt2).\n"});
    }
    ASSERT_TRUE(comesTrue([&told] { return hasInOrder(readFile("/state/second"), told); }));
    hold.end();
    EXPECT_EQ(second.end(), 0);
    EXPECT_TRUE(hasInOrder(readFile("/state/second"), {"BOOT", updated[0]["components"]["bc"]}));
}

TEST_F(Turn, UntilThenItHasTouchedNothingAndCtrlCEndsIt) {
    const Lock lock(packageDirectory);
    for (const int signalNumber : {SIGINT, SIGTERM}) {
        const OtherRun waiting("/state/waiting");
        EXPECT_TRUE(comesTrue([] { return readFile("/state/waiting").find(waits) == 0; }));
        EXPECT_EQ(waiting.end(signalNumber), 128 + signalNumber);
        EXPECT_EQ(countLogs(), 0U);
    }
    EXPECT_EQ(run({"-?"}).status, 0);
    EXPECT_EQ(run({"-nonsense"}).status, 1);
}

TEST_F(Turn, NobodyWaitsForAnotherDirectory) {
    const Lock lock("/state");
    EXPECT_EQ(run({}).console, alone.console);
}

}  // namespace e2e
