// One run at a time: two runs in one package directory would share its
// temporary files, and flash the same adapters at once.
#pragma once

namespace fwup {

// Waits until no other run works in the current directory, after a line about
// it on standard error, and keeps later runs waiting until this process ends,
// however it does: the lock is the kernel's, on the directory itself, and goes
// to no child. Where a directory can't be locked, as on some network file
// systems, returns at once. Signals end the wait as they end any process, so
// it comes before guardSignals.
void waitForTurn();

}  // namespace fwup
