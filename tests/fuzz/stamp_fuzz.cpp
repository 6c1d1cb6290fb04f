// The saved stamp, the build version and version strings: any files.
#include <cstring>

#include "fuzz_io.h"
#include "log/update_log.h"
#include "version/build_stamp.h"
#include "version/version_string.h"

// The first byte says where the input is cut in two.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) {
        return 0;
    }
    snprintf(fwup::szFwuplog, sizeof fwup::szFwuplog, "/dev/null");
    fwup::bSilent = 1;
    const size_t cut = 1 + data[0] % size;
    fwup::Device device = {};
    snprintf(device.mac, sizeof device.mac, "020000000001");
    writeInput("BuildVersion.txt", data + 1, cut - 1);
    writeInput(fwup::getVPDV0TempFileName(&device), data + cut, size - cut);
    const char* build = fwup::getBuildVer();
    require(build != nullptr && strlen(build) <= 48);
    const int force = fwup::isDeviceToBeUpdatedForVPDV0Comparison(&device, "./lnxfwvt2");
    require(force == 0 || force == 1);
    fwup::_build_version_t version = {};
    if (fwup::isVersionString(build, &version) == 1) {
        require(fwup::need_to_force_update(build, build) == 0);
        require(version.v0 >= 0 && version.v1C >= 'a' && version.v3C <= 'z');
    }
    return 0;
}
