#include "bench/benchmarks.h"
#include "bench/library_store.h"
#include "bench/raw_database.h"
#include "bench/recording_values.h"

namespace orvane::bench {

namespace {

constexpr const char* durationName = "duration of the busiest application, unread";
constexpr const char* unroundedName = "duration, beside a sum without rounding";
constexpr const char* lastUsedName = "lastUsedDate of the busiest application, unread";
constexpr const char* objectsName = "objects made by both";

}  // namespace

void runApplicationBenchmarks(Harness& harness, StoreFiles& files) {
    if (!harness.wantsAny({durationName, unroundedName, lastUsedName, objectsName})) return;
    const std::filesystem::path file = files.fileWith(harness.options().recordings);
    RawDatabase database(file);
    // A span counts with six decimals, as everywhere in the library.
    RawStatement sum(database.handle(),
                     R"(SELECT SUM(CASE WHEN "idle" THEN 0 ELSE ROUND("endDate" - "startDate", 6) END) )"
                     R"(FROM "Recording" WHERE "application" = ?)");
    RawStatement unroundedSum(database.handle(),
                              R"(SELECT SUM(CASE WHEN "idle" THEN 0 ELSE "endDate" - "startDate" END) )"
                              R"(FROM "Recording" WHERE "application" = ?)");
    RawStatement latest(database.handle(),
                        R"(SELECT MAX("endDate") FROM "Recording" WHERE "application" = ?)");
    sum.bind(1, busiestApplication);
    unroundedSum.bind(1, busiestApplication);
    latest.bind(1, busiestApplication);
    LibraryStore store(file, files.model());
    const Ref<OrvaneApp> application = store.application(applicationIdentifier(busiestApplication));
    const std::size_t objects = store.context().registeredObjectCount();

    const auto value = [](RawStatement& statement) {
        statement.step();
        const double result = statement.real(0);
        statement.reset();
        return result;
    };
    double rawSeconds = 0;
    DecimalSeconds ourSeconds{0};
    const auto compare = [&](const char* name, RawStatement& rawSum, Reach reach) {
        const Medians duration = alternate(
            std::max<std::size_t>(harness.options().rounds, 11),
            [&] { return microseconds([&] { rawSeconds = value(rawSum); }); },
            [&] { return microseconds([&] { ourSeconds = application->duration(); }); });
        // All dates are whole seconds, so rounding changes nothing.
        requireSame(rawSeconds, std::chrono::duration<double>(ourSeconds).count());
        harness.add({name, Unit::microseconds, duration.raw, duration.ours, reach});
    };
    compare(durationName, sum, {.ratio = 0.6});
    compare(unroundedName, unroundedSum, {});

    double rawLatest = 0;
    std::optional<Date> ourLatest;
    const Medians lastUsed = alternate(
        101, [&] { return microseconds([&] { rawLatest = value(latest); }); },
        [&] { return microseconds([&] { ourLatest = application->lastUsedDate(); }); });
    requireSame(rawLatest, ourLatest ? secondsSinceEpoch(*ourLatest) : 0);
    harness.add({lastUsedName, Unit::microseconds, lastUsed.raw, lastUsed.ours, {.ours = 100}});
    harness.add({objectsName,
                 Unit::count,
                 std::nullopt,
                 static_cast<double>(store.context().registeredObjectCount() - objects),
                 {.ours = 0}});
}

}  // namespace orvane::bench
