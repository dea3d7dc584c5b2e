#pragma once

#include <functional>
#include <optional>
#include <string>

#include "foundation/internal.h"
#include "platform/linux/shortcoming.h"

namespace orvane {

/// One way to learn whether the screens are switched off. Main thread only.
class ScreenPowerSource {
  public:
    virtual ~ScreenPowerSource() = default;

    /// For diagnoses, such as "wlr-output-power-management".
    virtual std::string name() const = 0;
    /// Whether the source answers at present.
    virtual bool isAvailable() const = 0;
    /// Whether all screens are off; false when the source does not answer. Never waits.
    virtual bool areScreensOff() const = 0;
    /// What is missing, where this is the desktop that the source is made for; else none.
    virtual std::optional<Shortcoming> shortcoming() const { return std::nullopt; }

    /// Set by the owner. Called on the main loop, never from within a call to the source, after a change of
    /// what the accessors tell.
    std::function<void()> onChanged;
};

}  // namespace orvane
