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

  private:
    PrivateBus bus_;
    std::unique_ptr<ChildProcess> registry_;
    GDBusConnection* session_;
};

}  // namespace orvane
