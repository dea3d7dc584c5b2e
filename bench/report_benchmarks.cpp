#include <algorithm>
#include <array>
#include <atomic>
#include <limits>
#include <thread>
#include <unordered_map>

#include "bench/benchmarks.h"
#include "bench/library_store.h"
#include "bench/raw_database.h"
#include "bench/recording_values.h"
#include "platform/simulated/simulated_platform.h"
#include "reporting/orvane_presence.h"
#include "reporting/range_item.h"
#include "tracker/orvane.h"

namespace orvane::bench {

namespace {

constexpr const char* tenYearsName = "report over ten years";
constexpr const char* liveName = "report over ten years, objects live";
constexpr const char* yearName = "report over one year";
constexpr const char* monthName = "report over one month";
constexpr const char* dayName = "report over one day";
constexpr std::array presenceNames{"presence of the first day", "presence of the middle day",
                                   "presence of the last day"};
constexpr const char* evenName = "presence for each recording, quickest (raw) to slowest day";
constexpr const char* delayName = "longest delay of a poll by a thread (raw), by a report in a child";
constexpr const char* memoryName = "memory before (raw) and after (ours) a report over ten years";
constexpr const char* titlesSelect =
    R"(SELECT "_id", "endDate", "startDate", "idle", "windowName", "application" FROM "Recording" )";

constexpr double edgeMargin = 3600;  // seconds; nearer to midnight a presence looks into the next day

Date day(std::int64_t index) {
    return dateFromSecondsSinceEpoch(static_cast<double>(firstDay + index * daySeconds));
}

/// Seconds of each item, longest first.
using Totals = std::vector<double>;

/// A report by application, as a loop over the rows with a hash map.
class RawReport {
  public:
    explicit RawReport(const std::filesystem::path& file)
        : database_(file),
          groups_(database_.handle(), R"(SELECT "_id", "group" FROM "Application")"),
          select_(
              database_.handle(),
              (titlesSelect + std::string(R"(WHERE "startDate" >= ? AND "startDate" <= ? AND "idle" = 0)"))
                  .c_str()) {}

    Totals operator()(Date from, Date to) {
        std::unordered_map<std::int64_t, double> applications;
        std::string title;
        select_.bind(1, secondsSinceEpoch(from));
        select_.bind(2, secondsSinceEpoch(to));
        while (select_.step()) {
            title.assign(select_.text(4));
            applications[select_.integer(5)] += select_.real(1) - select_.real(2);
        }
        select_.reset();
        return byGroup(applications);
    }

  private:
    Totals byGroup(const std::unordered_map<std::int64_t, double>& applications) {
        Totals totals(groupCount);
        while (groups_.step()) {
            const auto found = applications.find(groups_.integer(0));
            if (found == applications.end()) continue;
            if (groups_.isNull(1))
                totals.push_back(found->second);
            else
                totals[static_cast<std::size_t>(groups_.integer(1)) - 1] += found->second;
        }
        groups_.reset();
        std::sort(totals.begin(), totals.end(), std::greater<>());
        return totals;
    }

    RawDatabase database_;
    RawStatement groups_;
    RawStatement select_;
};

Totals readDurations(const std::vector<Ref<RangeItem>>& items) {
    Totals totals;
    for (const Ref<RangeItem>& item : items)
        totals.push_back(std::chrono::duration<double>(item->duration()).count());
    return totals;
}

class RawPresence {
  public:
    explicit RawPresence(const std::filesystem::path& file)
        : database_(file),
          select_(database_.handle(),
                  (titlesSelect + std::string(R"(WHERE "idle" = 0 AND "startDate" >= ? AND )"
                                              R"("startDate" <= ? AND "endDate" <= ? )"
                                              R"(ORDER BY "startDate")"))
                      .c_str()) {}

    /// Number of recordings read.
    std::size_t operator()(Date date) {
        const double begin = secondsSinceEpoch(date);
        const double end = begin + static_cast<double>(daySeconds) - 1;
        double last = 0;
        std::size_t count = read(begin, end, last);
        if (end - last < edgeMargin) count += read(begin + daySeconds, end + daySeconds, last);
        return count;
    }

  private:
    std::size_t read(double begin, double end, double& last) {
        std::size_t count = 0;
        std::string title;
        select_.bind(1, begin);
        select_.bind(2, end);
        select_.bind(3, end);
        for (; select_.step(); ++count) {
            title.assign(select_.text(4));
            last = std::max(last, select_.real(1));
        }
        select_.reset();
        return count;
    }

    RawDatabase database_;
    RawStatement select_;
};

/// The tracker on a desktop that follows this program, with a store in a folder.
class SimulatedTracker {
  public:
    explicit SimulatedTracker(const std::filesystem::path& folder)
        : platform_(std::make_shared<SimulatedPlatform>()) {
        Platform::install(platform_);
        Orvane::sharedOrvane().setUrl(folder);
        if (!Orvane::sharedOrvane().managedObjectContext())
            throw std::runtime_error("the store cannot be opened");
    }
    ~SimulatedTracker() {
        Orvane::resetShared();
        Platform::install(nullptr);
    }
    SimulatedTracker(const SimulatedTracker&) = delete;
    SimulatedTracker& operator=(const SimulatedTracker&) = delete;

    Orvane& tracker() { return Orvane::sharedOrvane(); }
    SimulatedPlatform& platform() { return *platform_; }

  private:
    std::shared_ptr<SimulatedPlatform> platform_;
};

void benchmarkReports(Harness& harness, const std::filesystem::path& folder) {
    struct Range {
        const char* name;
        std::int64_t from;
        std::int64_t to;
        std::size_t rounds;
    };
    const std::size_t rounds = harness.options().rounds;
    const std::array ranges{Range{tenYearsName, 0, dayCount, rounds}, Range{yearName, 1461, 1826, rounds * 3},
                            Range{monthName, 1980, 2010, rounds * 10},
                            Range{dayName, 2000, 2001, rounds * 30}};
    SimulatedTracker simulated(folder);
    RawReport raw(folder / "Orvaning.db");
    Totals rawTotals;
    Totals ourTotals;
    std::vector<Ref<RangeItem>> items;
    const auto ours = [&](const Range& range) {
        return microseconds([&] {
            items = simulated.tracker().itemsFromDate(day(range.from), day(range.to));
            ourTotals = readDurations(items);
        });
    };
    const auto rawOf = [&](const Range& range) {
        return microseconds([&] { rawTotals = raw(day(range.from), day(range.to)); });
    };
    for (const Range& range : ranges) {
        if (!harness.wants(range.name)) continue;
        const Medians medians = alternate(
            range.rounds, [&] { return rawOf(range); },
            [&] {
                items.clear();  // nothing lives when the next one begins
                const double time = ours(range);
                items.clear();
                return time;
            });
        requireSame(rawTotals, ourTotals);
        harness.add({range.name, Unit::microseconds, medians.raw, medians.ours, {.ratio = 1.35}});
    }
    if (harness.wants(liveName)) {
        std::vector<Ref<OrvaneRecording>> alive = fetchAll<OrvaneRecording>(
            *simulated.tracker().managedObjectContext(), {std::string(OrvaneRecording::entityName())});
        const Medians medians = alternate(
            rounds, [&] { return rawOf(ranges[0]); }, [&] { return ours(ranges[0]); });
        harness.add({liveName, Unit::microseconds, medians.raw, medians.ours, {.ratio = 0.85}});
    }
}

void benchmarkPresence(Harness& harness, const std::filesystem::path& folder) {
    SimulatedTracker simulated(folder);
    RawPresence raw(folder / "Orvaning.db");
    constexpr std::array<std::int64_t, 3> days{0, dayCount / 2, dayCount - 1};
    constexpr std::size_t rounds = 101;
    std::array<Samples, days.size()> rawTimes;
    std::array<Samples, days.size()> ourTimes;
    std::array<std::size_t, days.size()> counts{};
    // Days in turn, since a processor's speed changes from one moment to the next.
    for (std::size_t round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < days.size(); ++i) {
            Ref<OrvanePresence> presence;
            rawTimes[i].add(microseconds([&] { counts[i] = raw(day(days[i])); }));
            ourTimes[i].add(microseconds([&] { presence = OrvanePresence::presenceForDate(day(days[i])); }));
            if ((counts[i] != 0) != presence->startDate().has_value())
                throw std::runtime_error("the raw loop and the library see different days");
        }
    }
    double quickest = std::numeric_limits<double>::max();
    double slowest = 0;
    for (std::size_t i = 0; i < days.size(); ++i) {
        const double ours = ourTimes[i].median();
        harness.add({presenceNames[i], Unit::microseconds, rawTimes[i].median(), ours, {.ratio = 2}});
        const double each = ours / static_cast<double>(std::max<std::size_t>(counts[i], 1));
        quickest = std::min(quickest, each);
        slowest = std::max(slowest, each);
    }
    harness.add({evenName, Unit::microseconds, quickest, slowest, {.ratio = 1.2}});
}

/// Longest poll while `work` runs on a thread of its own.
template <class Poll, class Work>
double longestPoll(Poll&& poll, Work&& work) {
    double longest = 0;
    std::atomic<bool> done = false;
    const std::jthread thread([&] {
        work();
        done = true;
    });
    while (!done) {
        longest = std::max(longest, poll());
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return longest;
}

/// Keeps a processor busy for that many microseconds.
void compute(double duration) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double, std::micro>(duration);
    while (std::chrono::steady_clock::now() < end) {
    }
}

void benchmarkDelay(Harness& harness, const std::filesystem::path& file) {
    const ScratchCopy copy(file, memoryFolder);
    SimulatedTracker simulated(copy.folder());
    SimulatedPlatform& platform = simulated.platform();
    Orvane& tracker = simulated.tracker();
    platform.clock().setWallTime(std::chrono::seconds(firstDay + dayCount * daySeconds));
    platform.windowServer().noteInput();
    platform.workspace().setFrontmostApplication(
        RunningApplication{.bundleIdentifier = applicationIdentifier(2), .processIdentifier = 7});
    Dictionary window;
    window.set(kCGWindowOwnerPID, 7);
    window.set(kCGWindowLayer, 0);
    window.set(kCGWindowName, "Bench");
    window.set(kCGWindowOwnerName, "Application 2");
    platform.windowServer().setWindows({window});
    tracker.setEnabled(true);

    const auto poll = [&] {
        platform.clock().stepWallTime(std::chrono::seconds(10));
        const double time = wallMicroseconds([&] { tracker.poll(); });
        if (tracker.managedObjectContext()->hasChanges()) throw std::runtime_error("a poll was not saved");
        return time;
    };
    Samples undisturbed;
    for (std::size_t i = 0; i < 200; ++i) undisturbed.add(poll());

    // The longest of a run, beside a report and beside a thread that only computes for as long: what that one
    // costs too is the machine's doing.
    Samples besideReport;
    Samples besideOther;
    for (std::size_t run = 0; run < harness.options().rounds; ++run) {
        ManagedObjectContext child(ConcurrencyType::privateQueue);
        child.setParentContext(tracker.managedObjectContext());
        double duration = 0;
        besideReport.add(longestPoll(poll, [&] {
            duration = wallMicroseconds([&] {
                readDurations(tracker.itemsFromDate(day(0), day(dayCount), child));
                child.reset();
            });
        }));
        besideOther.add(longestPoll(poll, [&] { compute(duration); }));
    }
    harness.add({delayName,
                 Unit::microseconds,
                 besideOther.median() - undisturbed.median(),
                 besideReport.median() - undisturbed.median(),
                 {.ours = 5000}});
}

void benchmarkMemory(Harness& harness, const std::filesystem::path& folder) {
    SimulatedTracker simulated(folder);
    // Once for what is made only once, and a look at every row to fill SQLite's cache.
    readDurations(simulated.tracker().itemsFromDate(day(0), day(30)));
    simulated.tracker().managedObjectContext()->countForFetchRequest(
        {.entityName = "Recording", .predicate = Predicate::withFormat("windowName == %@", {Value("none")})});
    const double before = anonymousMemory();
    readDurations(simulated.tracker().itemsFromDate(day(0), day(dayCount)));
    harness.add({memoryName, Unit::bytes, before, anonymousMemory(), {.ratio = 1.1}});
}

}  // namespace

void runReportBenchmarks(Harness& harness, StoreFiles& files) {
    const std::filesystem::path folder = files.folderWith(harness.options().recordings);
    if (harness.wants(memoryName)) benchmarkMemory(harness, folder);
    if (harness.wantsAny({tenYearsName, liveName, yearName, monthName, dayName}))
        benchmarkReports(harness, folder);
    if (harness.wantsAny({presenceNames[0], presenceNames[1], presenceNames[2], evenName}))
        benchmarkPresence(harness, folder);
    if (harness.wants(delayName)) benchmarkDelay(harness, files.fileWith(harness.options().recordings));
}

}  // namespace orvane::bench
