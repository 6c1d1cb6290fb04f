// The repair of duplicated partition MACs: the management library corrects
// them on adapters whose PCI identity is eligible. Nothing is written to log
// or console here.
#pragma once

#include "platform/kvmapi.h"

namespace fwup {

// Repairs every eligible NIC that the library knows. True when at least one
// MAC was changed, so that the machine needs a reboot.
bool fix_max_if_duplicate();

// The repair itself: 1 when at least one NIC reported a changed MAC; 0
// otherwise, failures included.
int DoKVmapiConfigNicPartMAC();

// True when the record's identity is that of an eligible adapter.
bool _CanUpdateNPARMAC(const _KV_ADAPTER_INFO_EX* info);

}  // namespace fwup
