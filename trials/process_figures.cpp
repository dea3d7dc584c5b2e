#include "trials/process_figures.h"

#include <malloc.h>
#include <sqlite3.h>

#include <filesystem>
#include <iterator>

namespace orvane::trials {

ProcessFigures processFigures() {
    const struct mallinfo2 heap = ::mallinfo2();
    ProcessFigures figures;
    figures.sqliteMemory = sqlite3_memory_used();
    const auto inUse = static_cast<std::int64_t>(heap.uordblks + heap.hblkhd);
    figures.memory = inUse == 0 ? 0 : inUse - figures.sqliteMemory;
    // The folder's own descriptor is among them each time.
    figures.openFiles = static_cast<std::size_t>(std::distance(
        std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator()));
    return figures;
}

}  // namespace orvane::trials
