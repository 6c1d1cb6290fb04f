#include "names.h"

namespace report {

const char* nameOf(Operation operation) {
    static const char* const names[] = {"none",        "update",         "versions",
                                        "directory",   "iscsi-versions", "disable-management",
                                        "enable-ncsi", "disable-ncsi"};
    return names[static_cast<size_t>(operation)];
}

const char* nameOf(Outcome outcome) {
    static const char* const names[] = {
        "clean", "failed", "adapter-down", "no-adapters", "reboot-first", "usage-error", "cut-off"};
    return names[static_cast<size_t>(outcome)];
}

const char* nameOf(FlashOutcome outcome) {
    static const char* const names[] = {"cut-off",    "updated", "updated-reboot-needed",
                                        "not-needed", "failed",  "image-missing",
                                        "held-back"};
    return names[static_cast<size_t>(outcome)];
}

const char* nameOf(SwitchOutcome outcome) {
    static const char* const names[] = {"cut-off", "done", "done-reboot-needed", "failed"};
    return names[static_cast<size_t>(outcome)];
}

const char* nameOf(CrcOutcome outcome) {
    static const char* const names[] = {nullptr, "passed", "failed", "down"};
    return names[static_cast<size_t>(outcome)];
}

const char* nameOf(YbOutcome outcome) {
    static const char* const names[] = {nullptr, "right", "repaired", "failed"};
    return names[static_cast<size_t>(outcome)];
}

}  // namespace report
