#include "trials/use_ledger.h"

#include <algorithm>

namespace orvane::trials {

namespace {

constexpr std::int64_t pollInterval = 10;  // seconds
constexpr std::int64_t idleLimit = 120;    // seconds without input that are still use

}  // namespace

void UseLedger::reserve(const std::string& application, const std::string& title) {
    for (const bool idle : {false, true}) lines_[{application, title, idle}] = 0;
}

void UseLedger::add(const Stretch& stretch, std::int64_t begin) {
    // A look in the last second sees no time, but that the user is there.
    for (std::int64_t seen = 0; seen <= stretch.length; seen += pollInterval) {
        const std::int64_t until = std::min(seen + pollInterval, stretch.length);
        std::int64_t lastInput = 0;
        for (const std::int64_t input : stretch.inputs)
            // A poll comes before what happens in the same second.
            if (input < seen) lastInput = std::max(lastInput, input);
        const bool idle = seen - lastInput > idleLimit;
        const bool changed = stretch.titleChange > 0 && stretch.titleChange < seen;
        lines_[{stretch.application, changed ? stretch.otherTitle : stretch.title, idle}] += until - seen;
        if (idle) continue;
        if (until > seen) today_[stretch.application] += until - seen;
        if (!presence_) presence_.emplace(begin + seen, 0);
        presence_->second = begin + until;
    }
}

void UseLedger::erase(const std::string& application) {
    for (auto& [line, seconds] : lines_)
        if (line.application == application) seconds = 0;
}

void UseLedger::beginDay() {
    today_.clear();
    presence_.reset();
}

std::map<std::string, std::int64_t> UseLedger::used() const {
    std::map<std::string, std::int64_t> result;
    for (const auto& [line, seconds] : lines_)
        if (!line.idle && seconds > 0) result[line.application] += seconds;
    return result;
}

}  // namespace orvane::trials
