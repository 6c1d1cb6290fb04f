#include "inventory/version_report.h"

#include "log/update_log.h"

namespace fwup {

void displayFwVersions(const DeviceHeadTail* list) {
    writetoLog(
        "\n    ADAPTER MAC    \tBOOT\tMFW\tIPMI\tASF\tPXE\tUMP\tNCSI\tiSCSI\tEFI\tIMFW\tL2\t\tBUS:DEVICE:FUNC\n",
        true);
    writetoLog(
        "-------------------\t----\t----\t----\t---\t---\t---\t---\t---\t---\t---\t---\t\t---\n",
        true);
    for (const Device* device = firstDevice(list); device != nullptr; device = device->next) {
        writeMessage(true, "%s (%s)\t%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\t\t%d:%d:%d\n",
                     device->mac, device->chipName, device->bootVer, device->mfwVer,
                     device->ipmiVer, device->asfVer, device->pxeVer, device->umpVer,
                     device->ncsiVer, device->iscsiVer, device->efiVer, device->imfwVer,
                     device->l2Ver, device->pciBus, static_cast<int32_t>(device->pciDevice),
                     static_cast<int32_t>(device->pciFunction));
    }
}

}  // namespace fwup
