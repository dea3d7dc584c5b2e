#pragma once

#include <cstdint>
#include <vector>

#include "host/exchange/bucket_event.h"
#include "host/exchange/import_batch.h"
#include "host/exchange/import_report.h"

namespace orvane::host {

/// Makes recordings of the events of window buckets and puts them into the batch. Where the presence bucket
/// of the same computer says that the user was away, the recording is split and that part is idle. Time that
/// an earlier event covers already is not counted again; parts that follow one another without a gap, with
/// the same application, window and idle state, become one recording.
void addRecordings(std::vector<Bucket> buckets, ImportBatch& batch, ImportReport& report);

}  // namespace orvane::host
