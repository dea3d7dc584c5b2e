#include "platform/simulated/simulated_user_defaults.h"

namespace orvane {

Value SimulatedUserDefaults::objectForKey(std::string_view key) {
    const auto found = values_.find(key);
    return found == values_.end() ? Value() : found->second;
}

bool SimulatedUserDefaults::setObject(const Value& value, std::string_view key, Error*) {
    if (value == objectForKey(key)) return true;
    if (value.isNone())
        values_.erase(std::string(key));
    else
        values_.insert_or_assign(std::string(key), value);

    deliveries_.push_back({std::string(key), value});
    if (delivering_) return true;
    delivering_ = true;
    while (!deliveries_.empty()) {
        const Delivery delivery = std::move(deliveries_.front());
        deliveries_.pop_front();
        deliver(delivery);
    }
    delivering_ = false;
    return true;
}

void SimulatedUserDefaults::deliver(const Delivery& delivery) {
    std::erase_if(bindings_, [](const auto& binding) { return binding.expired(); });
    // A copy: a handler may bind or let go while it is told.
    const auto bindings = bindings_;
    for (const auto& weak : bindings) {
        const auto binding = weak.lock();
        if (binding && binding->key == delivery.key) binding->handler(delivery.value);
    }
}

std::shared_ptr<void> SimulatedUserDefaults::bind(std::string_view key, Handler handler) {
    auto binding = std::make_shared<Binding>(Binding{std::string(key), std::move(handler)});
    bindings_.push_back(binding);
    binding->handler(objectForKey(key));
    return binding;
}

}  // namespace orvane
