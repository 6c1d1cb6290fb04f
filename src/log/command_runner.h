// The single door to the shell: every command is logged before it runs, and
// its exit code after.
#pragma once

namespace fwup {

// Runs `command` through the shell and returns its wait status, as libc's
// `system` gives it. While the dry-run marker stands in /tmp/, a command that
// contains "upgrade" is only reported, and the status is 0.
int SYSTEM(const char* command);

// Formats a command line of at most 1023 characters and hands it to SYSTEM. A
// longer one is not run, since a cut command would do something else; its
// status reads as exit code 1.
__attribute__((format(printf, 1, 2))) int runCommand(const char* format, ...);

// The exit code in a wait status: status / 256. A failed call of the shell
// (-1) and a shell that a signal killed both read as 0.
int convert_return_code(int status);

// Removes `path` with an "rm" command when it exists, and returns that
// command's status. Returns 0, and runs nothing, when it does not.
int deleteFile(const char* path);

}  // namespace fwup
