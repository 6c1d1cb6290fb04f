// The one-line files that answer the flash utility's prompts.
#pragma once

namespace fwup {

// Writes `name` and a line feed into the file `name` in the current directory.
// When it cannot be created or written, reports that on log and console,
// leaves no file behind and returns false.
bool createResponseFile(const char* name);

// Writes "q", which ends the utility's listing.
bool createQuitFile();

}  // namespace fwup
