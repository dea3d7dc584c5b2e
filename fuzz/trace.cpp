// Traces of `orvane replay`, read to their end.

#include <sstream>

#include "fuzz/common.h"
#include "host/replay/trace_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane;
    std::istringstream input{std::string(fuzz::textOf(data, size))};
    host::TraceReader reader(input);
    if (std::holds_alternative<host::TraceFailure>(reader.header())) return 0;
    for (;;) {
        const auto line = reader.next();
        if (!std::holds_alternative<host::TraceLine>(line)) return 0;
    }
}
