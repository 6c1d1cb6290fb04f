// One run at a time: two runs in one package directory would share its
// temporary files, and flash the same adapters at once.
#pragma once

namespace fwup {

// Waits until no other run works in the current directory, after a line about
// it on standard error, and keeps later runs waiting until this process and
// all that it started have ended, however they do: the lock is the kernel's, on
// the directory itself, and commands inherit it, because one that outlives a
// killed run still writes to an adapter. Where a directory can't be locked, as on some network file
// systems, returns at once. Signals end the wait as they end any process, so
// it comes before guardSignals.
void waitForTurn();

}  // namespace fwup
