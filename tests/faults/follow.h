// Follows the steps of zentrix-report after a run, as a script would that knows
// nothing but their codes.
#pragma once

#include "cases.h"

namespace faults {

struct Ending {
    std::string broken;  // what must not be, or "-"
    // How it ended: "-" when the job is done, "support" when the advice is that, "remark"
    // where only a remark tells what isn't done, "untold" where nothing could tell.
    std::string how;
};

// What the adapters come to when nothing happens to the mode's run, and its steps are
// followed.
nlohmann::json followUndisturbed(const Mode& mode);

// With `shown`, logs and steps go to standard error.
Ending follow(const Case& c, const nlohmann::json& goal, bool shown);

}  // namespace faults
