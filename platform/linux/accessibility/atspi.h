#pragma once

#include <gio/gio.h>

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/session/bus_connection.h"

namespace orvane::atspi {

// What is used of the AT-SPI protocol, whose interfaces at-spi2-core describes. Answers are read whatever
// they are; null stands for no answer.

inline constexpr const char* accessibleInterface = "org.a11y.atspi.Accessible";
inline constexpr const char* windowEventInterface = "org.a11y.atspi.Event.Window";
inline constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";
inline constexpr const char* registryService = "org.a11y.atspi.Registry";
inline constexpr const char* rootPath = "/org/a11y/atspi/accessible/root";

/// Numbers of states, which are bits of a set.
enum class State : unsigned { active = 1, iconified = 15, showing = 25 };

/// Numbers of roles.
enum class Role : std::uint32_t { alert = 2, dialog = 16, fileChooser = 19, frame = 23 };

/// An application or something in it.
struct Object {
    std::string service;
    std::string path;

    bool operator<(const Object& other) const {
        return std::tie(service, path) < std::tie(other.service, other.path);
    }
    BusObject accessible() const { return {service, path, accessibleInterface}; }
};

/// The object whose children are all applications.
Object registryRoot();
BusObject busItself();
/// Arguments that ask for an object's name.
GVariant* nameArguments();

std::optional<std::vector<Object>> objectsIn(GVariant* values);
std::optional<std::int32_t> processIn(GVariant* values);
bool hasState(GVariant* values, State state);
std::uint32_t roleIn(GVariant* values);
/// The text that an answer about a property holds.
std::optional<std::string> textIn(GVariant* values);

}  // namespace orvane::atspi
