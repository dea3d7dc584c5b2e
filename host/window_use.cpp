#include "host/window_use.h"

#include <algorithm>
#include <map>

namespace orvane::host {

std::vector<WindowUse> windowsOf(const RangeItem& app) {
    std::map<std::string, DecimalSeconds> byTitle;
    for (const Ref<OrvaneRecording>& recording : app.recordings())
        byTitle[std::string(recording->windowName().value_or(""))] += recording->duration();
    std::vector<WindowUse> result;
    for (const auto& [title, duration] : byTitle) result.push_back({title, duration});
    std::stable_sort(result.begin(), result.end(), [](const WindowUse& left, const WindowUse& right) {
        return left.duration > right.duration;
    });
    return result;
}

}  // namespace orvane::host
