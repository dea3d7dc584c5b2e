// Bucket exports: what can be read can be put into a store, once.

#include "host/exchange/bucket_reader.h"
#include "host/exchange/bucket_recordings.h"

#include "fuzz/import.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane;
    fuzz::importInput(fuzz::textOf(data, size),
                      [](host::InputFile& input, host::ImportBatch& batch, host::ImportReport& report) {
                          batch.matchesByName = true;
                          addRecordings(host::BucketReader(input, batch, report).read(), batch, report);
                      });
    return 0;
}
