// Who keeps the next run waiting.
#pragma once

namespace fwup {

// A line on standard error that names the processes that hold a lock on the
// open directory, by number and name; nothing where the kernel doesn't tell.
// They are those that have the locked file open: whoever took the lock may
// have ended, and its number be another's.
void nameLockHolders(int directory);

}  // namespace fwup
