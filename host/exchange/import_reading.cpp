#include "host/exchange/import_reading.h"

#include "host/exchange/bucket_reader.h"
#include "host/exchange/bucket_recordings.h"
#include "host/exchange/csv_reader.h"
#include "host/exchange/json_lines_reader.h"

namespace orvane::host {

void readImport(InputFile& input, ExchangeFormat format, ImportBatch& batch, ImportReport& report) {
    switch (format) {
        case ExchangeFormat::jsonLines:
            JsonLinesReader(input, batch).read();
            break;
        case ExchangeFormat::csv:
            CsvReader(input, batch).read();
            break;
        case ExchangeFormat::buckets:
            batch.matchesByName = true;
            addRecordings(BucketReader(input, batch, report).read(), batch, report);
            break;
    }
}

}  // namespace orvane::host
