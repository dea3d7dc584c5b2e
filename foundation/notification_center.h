#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/export.h"
#include "foundation/value.h"

namespace orvane {

/// Something that happened: its name, who tells it (compared by address only, may be none) and details.
struct Notification {
    std::string name;
    const void* object = nullptr;
    Dictionary userInfo;
};

/// Delivers posted notifications to the observers registered for them, in the order of registration, before
/// `post` returns. Observers may be added and removed while a notification is delivered: added ones are not
/// told of it, removed ones no longer. Use on one thread.
class ORVANE_EXPORT NotificationCenter {
  public:
    using Handler = std::function<void(const Notification&)>;

    NotificationCenter();
    ~NotificationCenter();
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;

    /// Calls `handler` for every notification of that name (empty: of any name) told by `object` (none: by
    /// anyone). `observer` stands for who asked, for `removeObserver` only.
    void addObserver(const void* observer, Handler handler, std::string_view name = {},
                     const void* object = nullptr);
    /// Ends every registration of that observer.
    void removeObserver(const void* observer);

    void post(const Notification& notification);
    void post(std::string_view name, const void* object = nullptr, Dictionary userInfo = {}) {
        post(Notification{std::string(name), object, std::move(userInfo)});
    }

  private:
    struct Registration;
    std::vector<std::shared_ptr<Registration>> registrations_;
};

}  // namespace orvane
