#include <sys/file.h>

#include <cerrno>
#include <vector>

#include "fixture.h"
#include "run/run_turn.h"

namespace fwup {

struct LockAnswer {
    int operation;
    int error;  // 0 grants the lock
};
static std::vector<LockAnswer> lockAnswers;

extern "C" int __wrap_flock(int /*descriptor*/, int operation) {
    const LockAnswer answer = lockAnswers.at(0);
    lockAnswers.erase(lockAnswers.begin());
    EXPECT_EQ(operation, answer.operation);
    errno = answer.error;
    return answer.error == 0 ? 0 : -1;
}

using RunTurn = Fixture;

// What no run of the whole program can bring about: file systems without locks, and a wait that a
// signal interrupts.
TEST_F(RunTurn, GoesOnWithoutALockAndWaitsThroughInterruptions) {
    const int first = LOCK_EX | LOCK_NB;
    const std::pair<std::vector<LockAnswer>, bool> rows[] = {
        {{{first, ENOLCK}}, false},
        {{{first, EOPNOTSUPP}}, false},
        {{{first, EWOULDBLOCK}, {LOCK_EX, EINTR}, {LOCK_EX, 0}}, true},
        {{{first, EWOULDBLOCK}, {LOCK_EX, ENOLCK}}, true},
    };
    for (const auto& [answers, waits] : rows) {
        lockAnswers = answers;
        testing::internal::CaptureStderr();
        waitForTurn();
        EXPECT_EQ(testing::internal::GetCapturedStderr().empty(), !waits);
        EXPECT_TRUE(lockAnswers.empty());
    }
}

}  // namespace fwup
