#include "util/localized_strings.h"

#include <mutex>
#include <shared_mutex>
#include <utility>

namespace orvane {

namespace {

std::shared_mutex mutex;

LocalizedStrings& installedStrings() {
    static LocalizedStrings strings;
    return strings;
}

}  // namespace

void setLocalizedStrings(LocalizedStrings strings) {
    const std::lock_guard lock(mutex);
    // The parameter outlives the lock, so the old table is destroyed when the mutex is free again.
    installedStrings().swap(strings);
}

std::u16string localizedString(std::u16string_view text) {
    const std::shared_lock lock(mutex);
    const auto found = installedStrings().find(text);
    return found == installedStrings().end() ? std::u16string(text) : found->second;
}

}  // namespace orvane
