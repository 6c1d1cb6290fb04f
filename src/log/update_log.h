// The update log: one file a run, opened and closed for every message, so that
// the flash utility's own output lands between the tool's lines in true order.
#pragma once

#include <cstdint>
#include <cstdio>

namespace fwup {

// 1 keeps log messages off the console.
extern uint8_t bSilent;

// The path of this run's log; the callers' command lines append to it.
extern char szFwuplog[50];

// Room for a message: callers keep their texts below this, longer ones are cut.
constexpr size_t messageSize = 255;

// Makes the log directory when it is missing (else the current directory
// serves), picks the lowest numbered name that is free and writes the header.
// A log that cannot be written is reported on the console; the run goes on.
void initLogFile();

// Appends `text` to the log. With `echo`, and unless silent, prints it first,
// unchanged. A null text does nothing; a failed write is reported on the
// console unless silent.
void writetoLog(const char* text, bool echo);

// Formats a message of at most messageSize - 1 characters and writes it.
__attribute__((format(printf, 2, 3))) void writeMessage(bool echo, const char* format, ...);

// Prints a line on the console alone, unless silent: what the log says at
// greater length.
void showMarker(const char* marker);

// Writes the rest of `file` to the log as it stands, in pieces of at most
// messageSize - 1 characters. The caller closes the file.
void copyFileToLog(FILE* file, bool echo);

}  // namespace fwup
