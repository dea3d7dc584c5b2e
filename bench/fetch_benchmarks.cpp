#include <sqlite3.h>

#include "bench/benchmarks.h"
#include "bench/library_store.h"
#include "bench/raw_database.h"
#include "bench/recording_values.h"

namespace orvane::bench {

namespace {

constexpr const char* liveName = "fetch all: live objects, every value read";
constexpr const char* againName = "fetch all: again while they live";
constexpr const char* releaseName = "fetch all: releasing them";
constexpr const char* memoryName = "memory of a live object";

const FetchRequest& allRecordings() {
    static const FetchRequest request{std::string(OrvaneRecording::entityName())};
    return request;
}

RecordingValues readRaw(RawStatement& select) {
    RecordingValues values;
    std::string title;
    std::int64_t applications = 0;
    while (select.step()) {
        title.assign(select.text(4));
        applications ^= select.integer(5) ^ select.integer(0);
        values.add(select.real(2), select.real(1), select.integer(3) != 0, title);
    }
    select.reset();
    asm volatile("" : : "r"(applications));
    return values;
}

RecordingValues readObjects(const std::vector<Ref<OrvaneRecording>>& recordings) {
    RecordingValues values;
    std::uintptr_t applications = 0;
    for (const Ref<OrvaneRecording>& recording : recordings) {
        applications ^= reinterpret_cast<std::uintptr_t>(recording->application().get());
        values.add(secondsSinceEpoch(*recording->startDate()), secondsSinceEpoch(*recording->endDate()),
                   *recording->idle(), *recording->windowName());
    }
    asm volatile("" : : "r"(applications));
    return values;
}

/// Bytes for each object beyond the list of handles that the fetch returns and SQLite's own memory.
double memoryOfLiveObject(const std::filesystem::path& file, const StoreFiles& files) {
    LibraryStore store(file, files.model());
    // Fills SQLite's cache and whatever is made once.
    fetchAll<OrvaneRecording>(store.context(), {.entityName = "Recording", .fetchLimit = 1000});
    store.context().countForFetchRequest(
        {.entityName = "Recording", .predicate = Predicate::withFormat("windowName == %@", {Value("none")})});

    const double before = anonymousMemory() - static_cast<double>(sqlite3_memory_used());
    const auto recordings = fetchAll<OrvaneRecording>(store.context(), allRecordings());
    const double after = anonymousMemory() - static_cast<double>(sqlite3_memory_used());
    const auto list = static_cast<double>(recordings.capacity() * sizeof recordings.front());
    return (after - before - list) / static_cast<double>(recordings.size());
}

}  // namespace

void runFetchBenchmarks(Harness& harness, StoreFiles& files) {
    const std::filesystem::path file = files.fileWith(harness.options().recordings);
    // First of all, while the process has no free memory that the objects could go into.
    if (harness.wants(memoryName))
        harness.add({memoryName, Unit::bytes, std::nullopt, memoryOfLiveObject(file, files), {.ours = 135}});
    if (!harness.wantsAny({liveName, againName, releaseName})) return;

    RawDatabase database(file);
    RawStatement select(
        database.handle(),
        R"(SELECT "_id", "endDate", "startDate", "idle", "windowName", "application" FROM "Recording")");
    LibraryStore store(file, files.model());
    RecordingValues rawValues;
    RecordingValues ourValues;
    Samples again;
    Samples release;

    const auto raw = [&] { return microseconds([&] { rawValues = readRaw(select); }); };
    const auto ours = [&] {
        std::vector<Ref<OrvaneRecording>> recordings;
        const double live = microseconds([&] {
            recordings = fetchAll<OrvaneRecording>(store.context(), allRecordings());
            ourValues = readObjects(recordings);
        });
        requireSame(rawValues, ourValues);
        std::vector<Ref<OrvaneRecording>> same;
        again.add(microseconds([&] {
            same = fetchAll<OrvaneRecording>(store.context(), allRecordings());
            ourValues = readObjects(same);
        }));
        requireSame(rawValues, ourValues);
        same.clear();
        release.add(microseconds([&] { recordings.clear(); }));
        return live;
    };
    const Medians live = alternate(harness.options().rounds, raw, ours);
    harness.add({liveName, Unit::microseconds, live.raw, live.ours, {.ratio = 1.35}});
    harness.add({releaseName, Unit::microseconds, live.raw, release.median(), {.ratio = 0.3}});
    harness.add({againName, Unit::microseconds, live.raw, again.median(), {.ratio = 0.85}});
}

}  // namespace orvane::bench
