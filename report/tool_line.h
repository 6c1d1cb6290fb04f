// The lines that the tool itself writes to its log, each with its meaning.
#pragma once

#include <cstddef>
#include <string_view>

namespace report {

enum class LineKind {
    unknown,
    header,
    title,
    usageError,
    noDuplicates,
    rebootBanner,
    macsCorrected,
    noTemporaryFile,
    noTool,
    noDeviceList,
    noDeviceResources,
    noListingFile,
    noAdapters,
    noInventory,
    noNicResources,
    noDriverInformation,
    tableHead,
    tableRule,
    passBegins,
    driverVersion,
    stampCheck,
    stampCheckFailed,
    stampCheckDone,
    stampWriting,
    stampFailed,
    stampDone,
    directory,
    adapterDown,
    corrupted,
    comparing,
    flashBegins,
    imageMissing,
    flashFailed,
    flashDone,
    flashNotNeeded,
    flashNotAccepted,
    flashReboot,
    blockRemoved,
    blockNotRemoved,
    ybRight,
    ybRepaired,
    ybFailed,
    crcBegins,
    crcOfPort,
    crcDown,
    crcFailed,
    crcPassed,
    crcEnds,
    iscsiVersion,
    switchBegins,
    switchReboot,
    switchDone,
    switchFailed,
    switchFailedNcsi,
    skipped,
    errorsOccurred,
    updateComplete,
    // What no line says, but the run as a whole.
    noBuildVersion,
    buildVersionLost,
    cutOff,
    notAccepted,
    notRead,
    unchanged,
    answersDiffer,
    unknownToLibrary,
    doubtful,
};

struct LinePattern {
    LineKind kind;
    // As the tool writes it, without the blanks and line feeds around it; what
    // stands in angle brackets differs from line to line.
    const char* text;
};

constexpr size_t maxFields = 4;

struct ToolLine {
    LineKind kind = LineKind::unknown;
    std::string_view text;               // without the blanks around it
    std::string_view fields[maxFields];  // what stood in angle brackets, in order
};

// The table of all lines, and how many there are.
extern const LinePattern linePatterns[];
extern const size_t linePatternCount;

// The first text of this kind; null for one that no line has.
const char* textOf(LineKind kind);

// What a line means, judged by its text alone. The fields point into `line`.
ToolLine readToolLine(std::string_view line);

// Without blanks, tabs, line feeds and carriage returns at its ends.
std::string_view trimmed(std::string_view text);

bool startsWith(std::string_view text, std::string_view start);
bool endsWith(std::string_view text, std::string_view end);

// One row of the version table: 11 versions in the order of its columns.
constexpr size_t versionColumns = 11;
extern const char* const columnNames[versionColumns];

struct TableRow {
    std::string_view mac;
    std::string_view label;
    std::string_view versions[versionColumns];
    int bus = -1;
    int device = 0;
    int function = 0;
};

// False for a line that is no row.
bool readTableRow(std::string_view line, TableRow& row);

// The whole text as a decimal number of up to nine digits, perhaps negative.
bool readNumber(std::string_view text, int& number);

}  // namespace report
