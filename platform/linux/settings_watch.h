#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <vector>

#include "foundation/internal.h"

namespace orvane {

/// Tells on the default main context when a file in one of some folders was written, replaced, moved or
/// removed.
class SettingsWatch {
  public:
    /// `lost`: one of the folders itself went, and the watch should be made anew. The handler may destroy the
    /// watch.
    using Handler = std::function<void(bool lost)>;

    SettingsWatch(std::vector<std::filesystem::path> folders, Handler handler);
    ~SettingsWatch();
    SettingsWatch(const SettingsWatch&) = delete;
    SettingsWatch& operator=(const SettingsWatch&) = delete;

    /// Whether every folder is watched.
    bool isComplete() const { return descriptor_ >= 0 && watched_.size() == folders_.size(); }
    const std::vector<std::filesystem::path>& folders() const { return folders_; }

  private:
    void readEvents();

    std::vector<std::filesystem::path> folders_;
    Handler handler_;
    int descriptor_ = -1;
    unsigned source_ = 0;
    std::map<int, std::filesystem::path> watched_;
};

}  // namespace orvane
