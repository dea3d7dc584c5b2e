#include "bench/benchmarks.h"
#include "bench/counting_file_system.h"
#include "bench/library_store.h"
#include "bench/raw_database.h"
#include "bench/statement_watch.h"
#include "persistence/sqlite/store.h"

namespace orvane::bench {

namespace {

constexpr const char* diskName = "poll on disk, wall time";
constexpr const char* memoryName = "poll in memory, processor time";
constexpr const char* syncsName = "syncs of 10 polls";
constexpr const char* writesName = "writes of 10 polls";
constexpr const char* preparedName = "statements prepared by 10 polls";
constexpr const char* columnsName = "columns written by a poll";
constexpr const char* growthName = "poll in memory, 1,000 (raw) to all recordings (ours)";
constexpr const char* largeGrowthName = "poll in memory, all (raw) to 10 times as many recordings (ours)";
constexpr const char* rawGrowthName = "the same for SQLite alone";
constexpr const char* rawLargeGrowthName = "the same for SQLite alone, 10 times as many";
constexpr double pollInterval = 10;  // seconds
constexpr std::size_t countedPolls = 10;

/// A poll's writing with SQLite alone.
class RawPoll {
  public:
    explicit RawPoll(const std::filesystem::path& file, const std::string& fileSystem = {})
        : database_(file, fileSystem),
          begin_(database_.handle(), "BEGIN IMMEDIATE"),
          find_(database_.handle(), R"(SELECT "_id", "color", "disabled", "identifier", "name", "group" )"
                                    R"(FROM "Application" WHERE "identifier" = ?)"),
          move_(database_.handle(), R"(UPDATE "Recording" SET "endDate" = ? WHERE "_id" = ?)"),
          commit_(database_.handle(), "COMMIT") {
        RawStatement last(
            database_.handle(),
            R"(SELECT r."_id", r."endDate", a."identifier" FROM "Recording" r JOIN "Application" a )"
            R"(ON a."_id" = r."application" ORDER BY r."_id" DESC LIMIT 1)");
        last.step();
        recording_ = last.integer(0);
        endDate_ = last.real(1);
        identifier_ = last.text(2);
    }

    const std::string& identifier() const { return identifier_; }
    std::int64_t recording() const { return recording_; }

    void operator()() {
        endDate_ += pollInterval;
        begin_.run();
        find_.bind(1, identifier_);
        if (!find_.step()) throw std::runtime_error("the application was not found");
        find_.reset();
        move_.bind(1, endDate_);
        move_.bind(2, recording_);
        move_.run();
        commit_.run();
    }

  private:
    RawDatabase database_;
    RawStatement begin_;
    RawStatement find_;
    RawStatement move_;
    RawStatement commit_;
    std::string identifier_;
    std::int64_t recording_ = 0;
    double endDate_ = 0;
};

/// The same through the library, as the tracker does it.
class LibraryPoll {
  public:
    LibraryPoll(const std::filesystem::path& file, const StoreFiles& files, const RawPoll& raw,
                const std::string& fileSystem = {})
        : store_(file, files.model(), fileSystem), identifier_(raw.identifier()) {
        const EntityDescription& entity = *files.model()->entity(OrvaneRecording::entityName());
        const auto& storeIdentifier = store_.coordinator().store()->identifier();
        Error error;
        recording_ = refCast<OrvaneRecording>(
            store_.context().existingObjectWithID({&entity, storeIdentifier, raw.recording()}, &error));
        if (!recording_) throw std::runtime_error(error.localizedDescription());
        endDate_ = *recording_->endDate();
    }

    sqlite3* connection() { return store_.coordinator().store()->mainDatabase().handle(); }

    void operator()() {
        endDate_ += std::chrono::duration<double>(pollInterval);
        UndoManager* undoManager = store_.context().undoManager();
        if (undoManager) undoManager->disableUndoRegistration();
        const WriteScope scope(store_.context());
        const Ref<OrvaneApp> application = store_.application(identifier_);
        if (!application) throw std::runtime_error("the application was not found");
        recording_->setEndDate(endDate_);
        store_.save();
        if (undoManager) undoManager->enableUndoRegistration();
    }

  private:
    LibraryStore store_;
    std::string identifier_;
    Ref<OrvaneRecording> recording_;
    Date endDate_;
};

/// Both forms, each on a copy of its own in the same folder.
struct PollPair {
    PollPair(const std::filesystem::path& file, const std::filesystem::path& folder, const StoreFiles& files,
             const std::string& fileSystem = {})
        : rawCopy(file, folder),
          ourCopy(file, folder),
          raw(rawCopy.file(), fileSystem),
          ours(ourCopy.file(), files, raw, fileSystem) {}

    ScratchCopy rawCopy;
    ScratchCopy ourCopy;
    RawPoll raw;
    LibraryPoll ours;
};

void benchmarkOnDisk(Harness& harness, StoreFiles& files, const std::filesystem::path& file) {
    PollPair pair(file, files.workFolder(), files);
    // Disks are moody: many single polls, in turn.
    const Medians medians = alternate(
        harness.options().rounds * 20, [&] { return wallMicroseconds(pair.raw); },
        [&] { return wallMicroseconds(pair.ours); });
    harness.add({diskName, Unit::microseconds, medians.raw, medians.ours, {.ratio = 1.05}});
}

constexpr std::size_t batch = 20;
constexpr std::size_t batches = 41;

template <class Poll>
double processorTimeOf(Poll& poll) {
    return processorMicroseconds([&] {
               for (std::size_t i = 0; i < batch; ++i) poll();
           }) /
           batch;
}

void benchmarkInMemory(Harness& harness, StoreFiles& files, const std::filesystem::path& file) {
    PollPair pair(file, memoryFolder, files);
    const Medians medians = alternate(
        batches, [&] { return processorTimeOf(pair.raw); }, [&] { return processorTimeOf(pair.ours); });
    harness.add({memoryName, Unit::microseconds, medians.raw, medians.ours, {.ratio = 1.3}});
}

void benchmarkGrowth(Harness& harness, StoreFiles& files, std::uint64_t few, std::uint64_t many,
                     const char* name, const char* rawName) {
    PollPair small(files.fileWith(few), memoryFolder, files);
    PollPair big(files.fileWith(many), memoryFolder, files);
    const Medians ours = alternate(
        batches, [&] { return processorTimeOf(small.ours); }, [&] { return processorTimeOf(big.ours); });
    const Medians raw = alternate(
        batches, [&] { return processorTimeOf(small.raw); }, [&] { return processorTimeOf(big.raw); });
    harness.add({name, Unit::microseconds, ours.raw, ours.ours, {.ratio = 1.1}});
    harness.add({rawName, Unit::microseconds, raw.raw, raw.ours, {}});
}

template <class Poll>
CountingFileSystem::Counts countsOf(const CountingFileSystem& fileSystem, Poll& poll) {
    poll();
    const CountingFileSystem::Counts before = fileSystem.counts();
    for (std::size_t i = 0; i < countedPolls; ++i) poll();
    const CountingFileSystem::Counts after = fileSystem.counts();
    return {after.syncs - before.syncs, after.writes - before.writes};
}

void countOperations(Harness& harness, StoreFiles& files, const std::filesystem::path& file) {
    const CountingFileSystem fileSystem;
    PollPair pair(file, memoryFolder, files, fileSystem.name());
    const CountingFileSystem::Counts raw = countsOf(fileSystem, pair.raw);
    const CountingFileSystem::Counts ours = countsOf(fileSystem, pair.ours);
    const Reach equal{.equal = true};
    harness.add(
        {syncsName, Unit::count, static_cast<double>(raw.syncs), static_cast<double>(ours.syncs), equal});
    harness.add(
        {writesName, Unit::count, static_cast<double>(raw.writes), static_cast<double>(ours.writes), equal});

    const StatementWatch watch(pair.ours.connection());
    pair.ours();  // a new authorizer makes SQLite prepare every statement once more
    const std::size_t before = watch.questions();
    for (std::size_t i = 0; i < countedPolls; ++i) pair.ours();
    harness.add({preparedName,
                 Unit::count,
                 std::nullopt,
                 static_cast<double>(watch.questions() - before),
                 {.ours = 0}});
    harness.add({columnsName, Unit::count, 1, static_cast<double>(watch.writtenColumns().size()), equal});
}

}  // namespace

void runPollBenchmarks(Harness& harness, StoreFiles& files) {
    const std::uint64_t recordings = harness.options().recordings;
    if (harness.wants(diskName)) benchmarkOnDisk(harness, files, files.fileWith(recordings));
    if (harness.wants(memoryName)) benchmarkInMemory(harness, files, files.fileWith(recordings));
    if (harness.wantsAny({syncsName, writesName, preparedName, columnsName}))
        countOperations(harness, files, files.fileWith(recordings));
    if (harness.wantsAny({growthName, rawGrowthName}))
        benchmarkGrowth(harness, files, 1'000, recordings, growthName, rawGrowthName);
    if (harness.options().large && harness.wantsAny({largeGrowthName, rawLargeGrowthName}))
        benchmarkGrowth(harness, files, recordings, 10 * recordings, largeGrowthName, rawLargeGrowthName);
}

}  // namespace orvane::bench
