#include "foundation/observing.h"

#include <algorithm>
#include <utility>

#include "foundation/observation_state.h"

namespace orvane {

/// What an observation has to listen to.
struct ObservationToken::State::Sources {
    using Place = std::pair<KeyedObject*, std::string_view>;

    std::vector<Place> keys;
    /// Key paths followed already: dependencies may go round in a circle.
    std::vector<Place> followed;
    std::vector<Ref<KeyedObject>> held;
    /// Whether they depend on which objects stand along some path.
    bool leadOn = false;

    static bool addNew(std::vector<Place>& places, const Place& place) {
        if (std::find(places.begin(), places.end(), place) != places.end()) return false;
        places.push_back(place);
        return true;
    }
};

ObservationToken::State::State(KeyedObject& object, std::string_view keyPath, ChangeHandler handler)
    : object_(&object),
      keyPath_(keyPath),
      handler_(std::make_shared<const ChangeHandler>(std::move(handler))) {}

void ObservationToken::State::listen() {
    Sources sources;
    collect(sources, *object_, keyPath_);
    followsObjects_ = sources.leadOn;
    // Listeners that stay keep their places, and with them the order in which observers are told.
    std::vector<std::unique_ptr<KeyListener>> listeners;
    for (const auto& source : sources.keys) {
        const auto present = std::find_if(listeners_.begin(), listeners_.end(), [&](const auto& listener) {
            return listener && listener->object() == source.first && listener->key() == source.second;
        });
        listeners.push_back(present != listeners_.end()
                                ? std::move(*present)
                                : std::make_unique<KeyListener>(*source.first, source.second, *this));
    }
    listeners_ = std::move(listeners);
}

void ObservationToken::State::collect(Sources& sources, KeyedObject& object, std::string_view keyPath) const {
    const std::size_t dot = keyPath.find('.');
    const std::string_view key = keyPath.substr(0, dot);
    if (!Sources::addNew(sources.followed, {&object, keyPath})) return;
    const KeyTable& table = object.keyTable();
    if (!table.find(key)) throw UnknownKeyError(table.className(), key);
    Sources::addNew(sources.keys, {&object, key});
    for (const std::string_view path : table.keyPathsAffecting(key)) collect(sources, object, path);
    // A collection is not read only to find that it is no object.
    if (dot == std::string_view::npos || keyPath.substr(dot + 1).starts_with('@')) return;
    sources.leadOn = true;
    if (const Ref<KeyedObject> next = object.valueForKey(key).asObject()) {
        sources.held.push_back(next);
        collect(sources, *next, keyPath.substr(dot + 1));
    }
}

void ObservationToken::State::cancel() {
    // The handler may hold the last handle of anything, this observation's token included.
    const auto self = shared_from_this();
    const auto handler = std::move(handler_);
    listeners_.clear();
    oldValue_ = Value();
}

void ObservationToken::State::begin() {
    if (++openAnnouncements_ > 1 || !handler_) return;
    try {
        oldValue_ = currentValue();
    } catch (...) {
        --openAnnouncements_;
        throw;
    }
}

void ObservationToken::State::abandon() {
    if (--openAnnouncements_ == 0) oldValue_ = Value();
}

void ObservationToken::State::end() {
    if (--openAnnouncements_ > 0 || !handler_) return;
    Value before = std::exchange(oldValue_, Value());
    const Ref<KeyedObject> held(object_->referenceCount() > 0 ? object_ : nullptr);
    if (followsObjects_) listen();
    const auto handler = handler_;  // it may end its own observation
    (*handler)(Change{*object_, keyPath_, std::move(before), currentValue()});
}

ObservationToken::ObservationToken(std::shared_ptr<State> state) : state_(std::move(state)) {}
ObservationToken::ObservationToken(ObservationToken&&) noexcept = default;

ObservationToken& ObservationToken::operator=(ObservationToken&& other) noexcept {
    if (this != &other) {
        cancel();
        state_ = std::move(other.state_);
    }
    return *this;
}

ObservationToken::~ObservationToken() { cancel(); }

void ObservationToken::cancel() {
    if (const auto state = std::exchange(state_, nullptr)) state->cancel();
}

ObservationToken observe(KeyedObject& object, std::string_view keyPath, ChangeHandler handler) {
    auto state = std::make_shared<ObservationToken::State>(object, keyPath, std::move(handler));
    state->listen();
    return ObservationToken(std::move(state));
}

}  // namespace orvane
