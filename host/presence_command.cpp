#include <iostream>
#include <nlohmann/json.hpp>

#include "host/command.h"
#include "host/date_range.h"
#include "host/presence_texts.h"
#include "host/reading_platform.h"
#include "host/terminal.h"
#include "reporting/orvane_presence.h"
#include "util/day_boundaries.h"

namespace orvane::host {

int runPresence(const std::string& rangeText, const CommonOptions& options) {
    constexpr std::chrono::duration<double> dayAndSome{36 * 3600};
    constexpr std::chrono::days mostDays{3700};  // ten years: beyond that the range is more likely a slip
    OpenStore store(options.store);
    std::string problem;
    const Date now = Platform::current().clock().now();
    const auto range = parseDateRange(rangeText, now, problem);
    if (!range) {
        std::cerr << "orvane: " << problem << '\n';
        return exitUsage;
    }
    const Date last = std::min(range->to, now);
    if (last - range->from > mostDays) {
        std::cerr << "orvane: The range has too many days; name one of ten years at the most.\n";
        return exitUsage;
    }
    if (store.exists() && !store.context()) return exitFailure;
    usePresenceTexts();

    auto list = nlohmann::ordered_json::array();
    for (Date day = orvaneDayStart(range->from); day <= last;) {
        const Ref<OrvanePresence> presence = store.exists() ? OrvanePresence::presenceForDate(day) : nullptr;
        const std::string label = presence ? presence->label() : "-";
        const auto json = [](const std::optional<Date>& date) {
            return date ? nlohmann::ordered_json(description(*date)) : nlohmann::ordered_json();
        };
        if (options.json)
            list.push_back({{"date", localText(day).substr(0, 10)},
                            {"startDate", presence ? json(presence->startDate()) : nullptr},
                            {"endDate", presence ? json(presence->endDate()) : nullptr},
                            {"label", label}});
        else
            std::cout << (label == "-" ? localText(day).substr(0, 10) + " -" : label) << '\n';
        day = orvaneDayStart(day + dayAndSome);
    }
    if (options.json) std::cout << list.dump(2) << '\n';
    return store.readStatus();
}

}  // namespace orvane::host
