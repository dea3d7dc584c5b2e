#include <iostream>

#include "host/command.h"
#include "platform/linux/linux_platform.h"
#include "tracker/orvane.h"

namespace orvane::host {

int runEnable(bool enabled, const CommonOptions& options) {
    LinuxPlatform platform;
    Error error;
    if (!platform.userDefaults().setObject(enabled, orvaneEnabledDefault, &error)) {
        std::cerr << "orvane: " << error.localizedDescription() << '\n';
        return exitFailure;
    }
    if (options.json)
        std::cout << R"({"OrvaneEnabled": )" << (enabled ? "true" : "false") << "}\n";
    else
        std::cout << "Tracking is switched " << (enabled ? "on" : "off") << ".\n";
    return exitSuccess;
}

}  // namespace orvane::host
