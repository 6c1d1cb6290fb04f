#include "run/run_turn.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <cstdio>

namespace fwup {

// The descriptor stays open on purpose: closing it would give the lock up.
void waitForTurn() {
    const int directory = open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directory < 0 || flock(directory, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) {
        return;
    }
    fputs("Another run is under way in this directory. Waiting for it to end (Ctrl-C gives up).\n",
          stderr);
    // A handler that the caller's runtime installed may interrupt the wait.
    while (flock(directory, LOCK_EX) != 0 && errno == EINTR) {
    }
}

}  // namespace fwup
