#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/internal.h"
#include "foundation/keyed_object.h"
#include "foundation/observing.h"

namespace orvane {

/// One key of one object that an observation listens to. The observation owns it; the object knows it for as
/// long as both live.
class KeyListener {
  public:
    KeyListener(KeyedObject& object, std::string_view key, ObservationToken::State& owner);
    ~KeyListener();
    KeyListener(const KeyListener&) = delete;
    KeyListener& operator=(const KeyListener&) = delete;

    /// None once the object is gone.
    KeyedObject* object() const { return object_; }
    const std::string& key() const { return key_; }
    ObservationToken::State& owner() const { return owner_; }
    void objectGone() { object_ = nullptr; }

  private:
    KeyedObject* object_;
    std::string key_;
    ObservationToken::State& owner_;
};

/// Everyone who listens to the keys of one object, in the order in which they began.
class ObserverList {
  public:
    explicit ObserverList(KeyedObject& object) : object_(object) {}

    void add(KeyListener& listener) { listeners_.push_back(&listener); }
    /// Ends the list itself when it was the last one.
    void remove(const KeyListener& listener);
    void willChange(std::string_view key);
    /// Telling may end the list and its object. What handlers throw is thrown again once everybody was told.
    void didChange(std::string_view key);
    void objectGone();

  private:
    using States = std::vector<std::shared_ptr<ObservationToken::State>>;

    struct Announcement {
        std::string key;
        States states;
    };

    KeyedObject& object_;
    std::vector<KeyListener*> listeners_;
    std::vector<Announcement> open_;
};

}  // namespace orvane
