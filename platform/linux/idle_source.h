#pragma once

#include <functional>
#include <optional>
#include <string>

#include "foundation/internal.h"
#include "platform/linux/shortcoming.h"

namespace orvane {

/// One way to learn how long the user has touched nothing. Main thread only.
class IdleSource {
  public:
    virtual ~IdleSource() = default;

    /// For diagnoses, such as "ext-idle-notify".
    virtual std::string name() const = 0;
    /// Whether the source answers at present.
    virtual bool isAvailable() const = 0;
    /// Whether the source was looked for and what was found was told; before that, one that is there may be
    /// missed.
    virtual bool isDecided() const { return true; }
    /// Seconds since the user's last input; none when the source does not answer. Never waits long.
    virtual std::optional<double> idleSeconds() = 0;
    /// What is missing, where this is the desktop that the source is made for; else none.
    virtual std::optional<Shortcoming> shortcoming() const { return std::nullopt; }

    /// Set by the owner. Called on the main loop, never from within a call to the source.
    std::function<void(bool available)> onAvailabilityChanged;
};

}  // namespace orvane
