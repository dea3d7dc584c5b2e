#pragma once

#include <cstddef>
#include <cstdint>

namespace orvane::trials {

/// What this process holds.
struct ProcessFigures {
    /// Bytes of memory: those in use on the heap, without SQLite's, and anonymous mappings. Under sanitizers,
    /// which have a heap of their own, this is 0.
    std::int64_t memory = 0;
    std::int64_t sqliteMemory = 0;  ///< bytes
    std::size_t openFiles = 0;
};

ProcessFigures processFigures();

}  // namespace orvane::trials
