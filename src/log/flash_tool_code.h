// The exit codes of the flash utility that mean something to the tool.
#pragma once

namespace fwup {

enum FlashToolExitCode {
    codeSuccess = 0,
    codeNoUpdateNeeded = 35,  // the image is not newer
    codeNotApplied = 70,      // the image was not accepted
    codeRebootRequired = 95,  // done, and takes effect after a reboot
};

}  // namespace fwup
