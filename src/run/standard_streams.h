// Keeps the standard descriptors from being taken by other files.
#pragma once

namespace fwup {

// Opens /dev/null in place of every standard stream that the caller closed.
// Otherwise the log would be opened as descriptor 1, and console text would
// land in whatever file holds it by then.
void openStandardStreams();

}  // namespace fwup
