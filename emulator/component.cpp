#include "component.h"

#include <algorithm>
#include <iterator>

namespace emulator {

namespace {

// Whoever reads a directory looks for markers such as BC1, NCSI, ISCSI, EFI or
// L2T anywhere in a line, so no row may hold another row's marker: "iSCSI" in
// the configuration blocks keeps clear of ISCSI for that reason.
const ComponentKind componentKinds[] = {
    {"bc", "bc1", "BC1 boot code", nullptr},
    {"mfw1", "mfw1", "Management firmware", nullptr},
    {"ipmi", "ipmi", "IPMI firmware", "ipmi"},
    {"ump", "ump", "UMP firmware", "ump"},
    {"ncsi", "ncsi", "NCSI firmware", "mgmt"},
    {"mba", "mba", "PCI30 MBA", nullptr},
    {"efi", "efi", "EFI driver", nullptr},
    {"fcode", "fcode", "FCODE", nullptr},
    {"l2t", "l2t", "L2T firmware", nullptr},
    {"ib", "ib", "ISCSI boot", nullptr},
    {"isb_cfg", "isb_cfg", "iSCSI boot config", nullptr},
    {"isb_cfg2", "isb_cfg2", "iSCSI boot config 2", nullptr},
};

const ImageKind imageKinds[] = {
    {"bc", "bc", "bc", nullptr},        {"mfw1", "mfw1", "mfw1", nullptr},
    {"ipmi", "ipmi", "ipmi", nullptr},  {"ump", "ump", "ump", nullptr},
    {"ncsi", "ncsi", "ncsi", nullptr},  {"mba", "mba", "mba", nullptr},
    {"mbaf", "mba", "mba", "fcode"},    {"l2t", "l2t", "l2t", nullptr},
    {"ib", "ib_ipv4n6", "ib", nullptr},
};

template <class Kind, size_t Count>
const Kind* findBy(const char* Kind::*key, const std::string& wanted, const Kind (&kinds)[Count]) {
    const Kind* found = std::find_if(std::begin(kinds), std::end(kinds), [&](const Kind& kind) {
        return kind.*key != nullptr && wanted == kind.*key;
    });
    return found == std::end(kinds) ? nullptr : found;
}

}  // namespace

const ComponentKind* componentNamed(const std::string& name) {
    return findBy(&ComponentKind::name, name, componentKinds);
}

const ComponentKind* componentSwitchedBy(const std::string& cfgSwitch) {
    return findBy(&ComponentKind::cfgSwitch, cfgSwitch, componentKinds);
}

const ImageKind* imageNamed(const std::string& name) {
    return findBy(&ImageKind::name, name, imageKinds);
}

const ImageKind* imageForOption(const std::string& option) {
    return findBy(&ImageKind::option, option, imageKinds);
}

}  // namespace emulator
