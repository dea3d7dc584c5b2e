#pragma once

#include <deque>
#include <map>
#include <vector>

#include "platform/user_defaults.h"

namespace orvane {

/// User defaults in memory. Every change is delivered, in the order of the bindings, before the next one is:
/// a change that a handler makes waits until the present one has reached everybody.
class ORVANE_EXPORT SimulatedUserDefaults : public UserDefaults {
  public:
    Value objectForKey(std::string_view key) override;
    /// Never fails.
    bool setObject(const Value& value, std::string_view key, Error* error = nullptr) override;
    [[nodiscard]] std::shared_ptr<void> bind(std::string_view key, Handler handler) override;

  private:
    struct Binding {
        std::string key;
        Handler handler;
    };
    struct Delivery {
        std::string key;
        Value value;
    };

    void deliver(const Delivery& delivery);

    std::map<std::string, Value, std::less<>> values_;
    std::vector<std::weak_ptr<Binding>> bindings_;
    std::deque<Delivery> deliveries_;
    bool delivering_ = false;
};

}  // namespace orvane
