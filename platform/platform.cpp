#include "platform/platform.h"

#include <mutex>

namespace orvane {

namespace {

std::mutex installedMutex;
std::shared_ptr<Platform> installed;

}  // namespace

Platform& Platform::current() {
    const std::lock_guard lock(installedMutex);
    if (!installed) installed = makeLinuxPlatform();
    return *installed;
}

void Platform::install(std::shared_ptr<Platform> platform) {
    const std::lock_guard lock(installedMutex);
    // The parameter outlives the lock, so the old platform is destroyed when the mutex is free again.
    installed.swap(platform);
}

}  // namespace orvane
