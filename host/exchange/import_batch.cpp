#include "host/exchange/import_batch.h"

namespace orvane::host {

std::size_t ImportBatch::addGroup(GroupItem group) {
    groups_.push_back(std::move(group));
    return groups_.size() - 1;
}

std::size_t ImportBatch::addApplication(ApplicationItem application) {
    applications_.push_back(std::move(application));
    return applications_.size() - 1;
}

void ImportBatch::addRecording(const RecordingItem& recording) {
    add({recording.start, recording.end, numberOfWindow(recording.window),
         recording.application ? static_cast<std::uint32_t>(*recording.application + 1) : 0, recording.idle});
}

std::uint32_t ImportBatch::numberOfWindow(std::optional<std::string_view> window) {
    if (!window) return 0;
    if (const auto known = windowNumbers_.find(*window); known != windowNumbers_.end()) return known->second;
    windows_.emplace_back(*window);
    const auto number = static_cast<std::uint32_t>(windows_.size());
    windowNumbers_.emplace(windows_.back(), number);
    return number;
}

std::optional<std::string_view> ImportBatch::window(const Recording& recording) const {
    return recording.window ? std::optional<std::string_view>(windows_[recording.window - 1]) : std::nullopt;
}

}  // namespace orvane::host
