// Keeps a lost terminal or a stray signal from cutting a flash in half.
#pragma once

namespace fwup {

// From here on hang-up, interrupt, quit, terminate and broken-pipe signals do
// nothing to the tool nor, by inheritance, to the flash utility; and a child's
// status can always be read, whatever the parent process set up.
void guardSignals();

}  // namespace fwup
