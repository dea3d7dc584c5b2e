#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "foundation/keyed_object.h"

namespace orvane {

/// What an observer is told: the object and key path it asked for, and the value before and after.
struct Change {
    KeyedObject& object;
    std::string_view keyPath;
    Value oldValue;
    Value newValue;
};

using ChangeHandler = std::function<void(const Change&)>;

/// Ends an observation when it is destroyed. It may outlive the object that is observed.
class ORVANE_EXPORT ObservationToken {
  public:
    ObservationToken() = default;
    ObservationToken(ObservationToken&&) noexcept;
    ObservationToken& operator=(ObservationToken&&) noexcept;
    ~ObservationToken();

    /// Ends the observation now. The handler is not called again, not even for a change that is being
    /// announced.
    void cancel();

    class State;
    explicit ObservationToken(std::shared_ptr<State> state);

  private:
    std::shared_ptr<State> state_;
};

/// Calls `handler` after every announced change of `keyPath` as seen from `object`, and of whatever it
/// depends on, until the token goes. Announcements within announcements, of whatever keys, count as one
/// change, told at the end of the outermost one. A path of several keys follows the objects on the way:
/// replacing one of them counts as a change. It does not follow the elements of a collection.
///
/// The object is not kept alive; the observation ends with it. A handler may end its own or other
/// observations, or begin some, while it is being told; begun ones are told from the next change on. A
/// handler may also let go of the object. Throws UnknownKeyError when the object, or one that the path leads
/// over, has no such key. Call and be told on the object's own thread.
[[nodiscard]] ORVANE_EXPORT ObservationToken observe(KeyedObject& object, std::string_view keyPath,
                                                     ChangeHandler handler);

}  // namespace orvane
