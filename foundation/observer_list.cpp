#include "foundation/observer_list.h"

#include <algorithm>
#include <exception>

#include "foundation/observation_state.h"

namespace orvane {

KeyListener::KeyListener(KeyedObject& object, std::string_view key, ObservationToken::State& owner)
    : object_(&object), key_(key), owner_(owner) {
    object.observerList().add(*this);
}

KeyListener::~KeyListener() {
    if (object_) object_->existingObserverList()->remove(*this);
}

void ObserverList::remove(const KeyListener& listener) {
    std::erase(listeners_, &listener);
    if (listeners_.empty() && open_.empty()) object_.dropObserverList();
}

void ObserverList::willChange(std::string_view key) {
    States states;
    for (const KeyListener* listener : listeners_)
        if (listener->key() == key) states.push_back(listener->owner().shared_from_this());
    if (states.empty()) return;
    // Reading a value may announce changes of its own, so the announcement stands before anything is read.
    open_.push_back({std::string(key), states});
    for (auto state = states.begin(); state != states.end(); ++state) {
        try {
            (*state)->begin();
        } catch (...) {
            std::for_each(states.begin(), state, [](const auto& begun) { begun->abandon(); });
            open_.pop_back();
            throw;
        }
    }
}

void ObserverList::didChange(std::string_view key) {
    const auto announcement =
        std::find_if(open_.rbegin(), open_.rend(), [&](const Announcement& open) { return open.key == key; });
    if (announcement == open_.rend()) return;
    const States states = std::move(announcement->states);
    open_.erase(std::next(announcement).base());
    // Nothing of the list may be touched from here on.
    if (listeners_.empty() && open_.empty()) object_.dropObserverList();
    std::exception_ptr problem;
    for (const auto& state : states) {
        try {
            state->end();
        } catch (...) {
            if (!problem) problem = std::current_exception();
        }
    }
    if (problem) std::rethrow_exception(problem);
}

void ObserverList::objectGone() {
    States ended;
    for (KeyListener* listener : listeners_) {
        listener->objectGone();
        if (listener->owner().isRootedIn(object_)) ended.push_back(listener->owner().shared_from_this());
    }
    listeners_.clear();
    // From here on others may be let go of: old values, and with the handlers whatever these held.
    const std::vector<Announcement> open = std::move(open_);
    for (const Announcement& announcement : open)
        for (const auto& state : announcement.states) state->abandon();
    for (const auto& state : ended) state->cancel();
}

}  // namespace orvane
