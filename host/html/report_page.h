#pragma once

#include <string>
#include <vector>

#include "host/date_range.h"
#include "persistence/managed_object_context.h"
#include "reporting/range_item.h"

namespace orvane::host {

/// What a report page is made of.
struct ReportPageContent {
    /// As the range report gives them.
    std::vector<Ref<RangeItem>> items;
    DateRange range;
    Date now;
    bool windows = false;  ///< the titles behind each application too
    /// Where the items came from; none for a store that does not exist.
    ManagedObjectContext* context = nullptr;
};

/// The report as one page of HTML that needs nothing else: a timeline of each day when there are up to three,
/// a heat map of hours when there are more, and the time of each group and application.
std::string reportPage(const ReportPageContent& content);

}  // namespace orvane::host
