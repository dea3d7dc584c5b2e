#pragma once

#include <gio/gio.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/platform/session/private_bus.h"

namespace orvane {

/// A login manager that does what the test says.
class MockLoginManager {
  public:
    /// Returns when it is on the bus.
    explicit MockLoginManager(PrivateBus& bus);
    ~MockLoginManager();
    MockLoginManager(const MockLoginManager&) = delete;
    MockLoginManager& operator=(const MockLoginManager&) = delete;

    void prepareFor(const char* what, bool begins);
    /// Announced as a new one.
    void addSession(const char* identifier, unsigned user);
    void removeSession(const char* identifier);
    void lock(const char* session) { callSession(session, "Lock", nullptr); }
    void unlock(const char* session) { callSession(session, "Unlock", nullptr); }
    void hintLocked(const char* session, bool isLocked) {
        callSession(session, "SetLockedHint", g_variant_new("(b)", isLocked));
    }
    /// What is held off, and how: "sleep delay".
    std::vector<std::string> inhibitors();

  private:
    void call(const std::string& path, const char* interface, const char* method, GVariant* arguments);
    void callSession(const char* session, const char* method, GVariant* arguments);
    void emit(const char* signal, const char* signature, std::initializer_list<GVariant*> values);

    GDBusConnection* connection_;
    std::unique_ptr<ChildProcess> process_;
};

/// A screen saver that the test itself plays on the bus.
class MockScreenSaver {
  public:
    MockScreenSaver(PrivateBus& bus, const char* service, const char* path, bool isActive);
    ~MockScreenSaver();
    MockScreenSaver(const MockScreenSaver&) = delete;
    MockScreenSaver& operator=(const MockScreenSaver&) = delete;

    /// Tells the change from the object at `path`.
    void setActive(bool isActive, const char* path);

  private:
    GDBusConnection* connection_;
    std::string service_;
    bool isActive_;
};

}  // namespace orvane
