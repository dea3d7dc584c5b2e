#pragma once

#include "bench/generator.h"
#include "bench/harness.h"

namespace orvane::bench {

// Each measures what is wanted of its subject. What goes wrong throws std::runtime_error.

/// All recordings as live objects: making, releasing, memory.
void runFetchBenchmarks(Harness& harness, StoreFiles& files);
/// Opening a store, and inserting many recordings.
void runStoreBenchmarks(Harness& harness, StoreFiles& files);
/// Derived values of an application.
void runApplicationBenchmarks(Harness& harness, StoreFiles& files);
/// What the tracker writes every ten seconds.
void runPollBenchmarks(Harness& harness, StoreFiles& files);
/// Range reports and presence.
void runReportBenchmarks(Harness& harness, StoreFiles& files);
/// The host program's report as a whole process.
void runHostBenchmark(Harness& harness, StoreFiles& files, const std::filesystem::path& host);

/// A folder in memory.
inline const std::filesystem::path memoryFolder = "/dev/shm";

}  // namespace orvane::bench
