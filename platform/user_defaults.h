#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "foundation/error.h"
#include "foundation/value.h"

namespace orvane {

/// The user's settings for this host, by key. Main thread only.
class ORVANE_EXPORT UserDefaults {
  public:
    virtual ~UserDefaults() = default;

    /// The value that is set; none when the key is not set.
    virtual Value objectForKey(std::string_view key) = 0;
    /// Sets the value, or removes the key when the value is none. False, with an error, when it cannot be
    /// kept.
    virtual bool setObject(const Value& value, std::string_view key, Error* error = nullptr) = 0;

    /// The value as a boolean; false when the key is not set.
    bool boolForKey(std::string_view key) { return objectForKey(key).boolValue(); }

    using Handler = std::function<void(const Value&)>;

    /// Delivers the value, or none, now and again after each change until the token is destroyed. A value
    /// equal to the one that is set is no change.
    [[nodiscard]] virtual std::shared_ptr<void> bind(std::string_view key, Handler handler) = 0;
};

}  // namespace orvane
