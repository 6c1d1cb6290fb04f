// Two runs in one directory: the second waits until the first has ended, however it did.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <future>
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

// A run beside the test's own, with its console in a file.
static std::future<Result> startRun() {
    return std::async(std::launch::async, [] {
        return run({}, [] {
            writeFile("/state/pid", std::to_string(getpid()));
            dup2(open("/state/console", O_WRONLY | O_CREAT | O_TRUNC, 0644), STDOUT_FILENO);
            dup2(STDOUT_FILENO, STDERR_FILENO);
        });
    });
}

static void signalRun(int signalNumber) {
    kill(std::stoi(readFile("/state/pid")), signalNumber);
}

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

// Holds up the first flash of the run that comes to it first.
static void delayFlash(int milliseconds) {
    editAdapters(Json{
        {"/faults", {{{"command", {{"verb", "upgrade"}, {"nth", 1}}}, {"delay", milliseconds}}}}});
}

TEST_F(Turn, SecondRunFollowsTheFirst) {
    delayFlash(1500);
    std::future<Result> first = startRun();
    ASSERT_TRUE(comesTrue([] { return countLogs() == 1; }));
    const Result second = run({});
    EXPECT_EQ(first.get().status, 0);
    EXPECT_EQ(readFile("/state/console"), alone.console);
    EXPECT_EQ(readFile(logDirectory + "/kvlnfwup.log"), alone.log);
    EXPECT_EQ(second.status, 0);
    EXPECT_EQ(second.console.find(waits), 0U);
    EXPECT_EQ(second.logPath, logDirectory + "/kvlnfwup001.log");
    EXPECT_EQ(second.files, Texts{});
    EXPECT_EQ(readAdapters()["adapters"], updated);
}

// What the dead run left behind holds the lock: had the next run not waited, it would have shown
// the version that the adapter had before.
TEST_F(Turn, UtilityOfAKilledRunIsWaitedFor) {
    delayFlash(3000);
    std::future<Result> first = startRun();
    ASSERT_TRUE(comesTrue([] {
        return readFile(logDirectory + "/kvlnfwup.log").find(" upgrade ") != std::string::npos;
    }));
    // The log tells of a command before it starts.
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    signalRun(SIGKILL);
    EXPECT_EQ(first.get().status, 128 + SIGKILL);
    const Result second = run({"-v"});
    EXPECT_EQ(second.status, 0);
    EXPECT_EQ(second.console.find(waits), 0U);
    EXPECT_TRUE(hasInOrder(second.console, {"BOOT", updated[0]["components"]["bc"]}));
    if (fs::exists("/proc/self")) {
        EXPECT_TRUE(
            hasInOrder(second.console, {"\nHeld by process ", " (sh), ", " (lnxfwvt2).\n"}));
    }
}

TEST_F(Turn, UntilThenItHasTouchedNothingAndCtrlCEndsIt) {
    const Lock lock(packageDirectory);
    for (const int signalNumber : {SIGINT, SIGTERM}) {
        fs::remove("/state/console");
        std::future<Result> waiting = startRun();
        EXPECT_TRUE(comesTrue([] { return readFile("/state/console").find(waits) == 0; }));
        signalRun(signalNumber);
        EXPECT_EQ(waiting.get().status, 128 + signalNumber);
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
