// The tool's exit statuses; the update pass answers with them, too.
#pragma once

namespace fwup {

enum ExitStatus {
    exitClean = 0,
    exitErrors = 1,         // also when a reboot is needed first
    exitNoDevices = 171,    // discovery returned no list
    exitAdapterDown = 172,  // the last failure of the update pass
};

}  // namespace fwup
