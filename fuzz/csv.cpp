// Exports as CSV: what can be read can be put into a store, once.

#include "host/exchange/csv_reader.h"

#include "fuzz/import.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane;
    fuzz::importInput(fuzz::textOf(data, size),
                      [](host::InputFile& input, host::ImportBatch& batch, host::ImportReport& report) {
                          static_cast<void>(report);
                          host::CsvReader(input, batch).read();
                      });
    return 0;
}
