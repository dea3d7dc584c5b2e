#pragma once

#include "host/exchange/exchange_format.h"
#include "host/exchange/import_batch.h"
#include "host/exchange/import_report.h"
#include "host/exchange/input_file.h"

namespace orvane::host {

/// Adds what the file holds to the batch; what of a bucket export makes no sense is counted in the report.
/// Throws InputProblem at the first line that is not of the format.
void readImport(InputFile& input, ExchangeFormat format, ImportBatch& batch, ImportReport& report);

}  // namespace orvane::host
