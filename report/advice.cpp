#include "advice.h"

namespace report {

Advice adviceFor(Matter matter) {
    switch (matter) {
        case Matter::noBuildVersion:
            return explained("Error in opening file", "no-build-version", actRepeat,
                             "Put BuildVersion.txt back into the package directory.");
        case Matter::buildVersionLost:
            return {"build-version-lost",
                    "BuildVersion.txt was there at first and could not be opened any more.",
                    "the rest of this one was flashed by force, and later ones were left out.",
                    "put the file back, start from the package directory, and run again.",
                    actRepeat,
                    "Put BuildVersion.txt back into the package directory."};
        case Matter::noEnd:
            return {
                "no-end",
                "The run was killed, the power failed, or the log's disk was full; or the run still goes on.",
                "",
                "see first that the run has ended; then run again.",
                actRepeat,
                "See that there is room on the log's disk."};
        case Matter::headingAlone:
            return {
                "heading-alone",
                "Only the options were asked for, or the run ended or waits before it did anything.",
                "untouched, if the run has ended.",
                "nothing, if only the options were asked for; otherwise run again.", actRepeat};
        case Matter::refused:
            return {
                "not-accepted",
                "The utility did not accept the image (exit code 70): it is for another device or another component.",
                "this component is as it was.",
                "get another image. Force does not help, and 70 counts as no update needed the next time.",
                actRepeat,
                "Get another image for each one that was not accepted (exit code 70)."};
        case Matter::notRead:
            return {
                "not-read",
                "The utility failed to read something, and the tool went on with what it had got until then.",
                "a port whose directory was not read shows \"NA\"; a field YB that was not read was not repaired.",
                "remove the cause and run again.", actRepeat};
        case Matter::nothingWritten:
            return {
                "not-written",
                "The utility reported success for a flash that was not forced, which writes newer images only; yet the second table shows the same version as the first.",
                "this component is as it was.",
                "run again with -f, and contact support if the version stays.", actForce};
        case Matter::sameAsBefore:
            return {
                "unchanged",
                "The flash was forced and succeeded, and the version is the same: the package brings the very version that was installed, or nothing was written.",
                "as they were.",
                "compare the version with the package's. If it is the package's, all is well; otherwise run again with -f.",
                actFine};
        case Matter::noBlock:
            return {"no-block",
                    "The adapter has no such iSCSI configuration, so none could be removed.",
                    "as they should be.", "nothing.", actFine};
        case Matter::answersDiffer:
            return {
                "answers-differ",
                "The ports of one adapter share their firmware, and no component comes or goes by itself, so one of the utility's answers was wrong or was lost.",
                "they carry whatever one of the answers shows; what the first table lacks was not flashed.",
                "look at the versions again with -v; after an update, run again with -f.",
                actRepeat};
        case Matter::unknownToLibrary:
            return {
                "unknown-to-library",
                "The management library told nothing of this port: its bus shows as -1.",
                "taken to have a driver; flashed once for each such port; a field YB was not checked.",
                "check that the library is the adapter maker's, and run again.",
                actRepeat,
                "Check the management library."};
        case Matter::doubtful:
            return {
                "doubtful",
                "The log contradicts itself: the utility printed lines that look like the tool's own, or texts are lost, as on a full disk.",
                "perhaps not as the log has it.",
                "look at the versions with -v, and run again.",
                actRepeat,
                "See that there is room on the log's disk."};
    }
    return {};
}

}  // namespace report
