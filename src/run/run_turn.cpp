#include "run/run_turn.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <cstdio>

#include "run/lock_holder.h"

namespace fwup {

// The descriptor stays open on purpose, here and in every command: the lock is given up when the
// last of them has closed it.
void waitForTurn() {
    const int directory = open(".", O_RDONLY | O_DIRECTORY);
    if (directory < 0 || flock(directory, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) {
        return;
    }
    fputs(
        "Another run is under way in this directory, or its flash utility still works. Waiting for it to end (Ctrl-C gives up).\n",
        stderr);
    nameLockHolders(directory);
    // A handler that the caller's runtime installed may interrupt the wait.
    while (flock(directory, LOCK_EX) != 0 && errno == EINTR) {
    }
}

}  // namespace fwup
