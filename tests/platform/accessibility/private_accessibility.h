#pragma once

#include <gio/gio.h>

#include <memory>
#include <string>

#include "tests/platform/session/private_bus.h"

namespace orvane {

/// An accessibility bus of the test's own, with the real registry, which a session bus leads to.
class PrivateAccessibility {
  public:
    /// Where the registry's program is; empty when it is not installed.
    static std::string registryProgram();

    explicit PrivateAccessibility(PrivateBus& sessionBus);
    ~PrivateAccessibility();
    PrivateAccessibility(const PrivateAccessibility&) = delete;
    PrivateAccessibility& operator=(const PrivateAccessibility&) = delete;

    /// For the environment variable AT_SPI_BUS_ADDRESS of programs.
    const std::string& address() const { return bus_.address(); }
    /// A connection of the test's own to it. The caller releases it.
    GDBusConnection* connect() { return bus_.connect(); }
    /// The registry of applications.
    ChildProcess& registry() { return *registry_; }
    /// Whether anybody has tried to turn accessibility on or off for the user.
    bool wasSwitched() const { return wasSwitched_; }

  private:
    void waitForRegistry();

    PrivateBus bus_;
    std::unique_ptr<ChildProcess> registry_;
    GDBusConnection* session_;
    bool wasSwitched_ = false;
};

}  // namespace orvane
