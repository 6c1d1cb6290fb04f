#include "run/signal_guard.h"

#include <csignal>

namespace fwup {

static const int ignoredSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE};

void guardSignals() {
    for (const int signalNumber : ignoredSignals) {
        signal(signalNumber, SIG_IGN);
    }
    // An inherited "ignore" would make the shell call fail, which reads as 0.
    signal(SIGCHLD, SIG_DFL);
}

}  // namespace fwup
