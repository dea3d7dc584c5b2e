#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/internal.h"
#include "foundation/observer_list.h"

namespace orvane {

/// One observation: it listens to the keys along its path, and to all those that they depend on. An
/// announcement thus needs to look for its own key only.
class ObservationToken::State : public std::enable_shared_from_this<State> {
  public:
    State(KeyedObject& object, std::string_view keyPath, ChangeHandler handler);

    /// Listens to what the path leads over now, and to nothing else any more. Changes nothing when it throws.
    void listen();
    void cancel();

    /// Announcements that concern the observation: the first remembers the value, the last one tells. Those
    /// of several keys count as one change.
    void begin();
    void end();
    /// An announcement ends without its change.
    void abandon();

    bool isRootedIn(const KeyedObject& object) const { return object_ == &object; }

  private:
    struct Sources;

    void collect(Sources& sources, KeyedObject& object, std::string_view keyPath) const;
    Value currentValue() const { return object_->valueForKeyPath(keyPath_); }

    KeyedObject* object_;
    const std::string keyPath_;
    std::shared_ptr<const ChangeHandler> handler_;
    std::vector<std::unique_ptr<KeyListener>> listeners_;
    bool followsObjects_ = false;
    int openAnnouncements_ = 0;
    Value oldValue_;
};

}  // namespace orvane
