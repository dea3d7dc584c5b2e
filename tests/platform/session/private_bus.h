#pragma once

#include <gio/gio.h>

#include <memory>
#include <string>

#include "tests/platform/child_process.h"

namespace orvane {

/// A message bus of the test's own on which everybody may do everything. It can be ended and started again at
/// the same address.
class PrivateBus {
  public:
    /// In `folder`, which must exist already, or in one of its own that only this user can enter.
    explicit PrivateBus(const std::string& folder = {});
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    const std::string& address() const { return address_; }
    void start();
    void kill() { daemon_.reset(); }

    /// A connection to it, for the test to play others with. The caller releases it.
    GDBusConnection* connect();

  private:
    std::string folder_;
    std::string address_;
    std::unique_ptr<ChildProcess> daemon_;
};

}  // namespace orvane
