#include "bench/benchmarks.h"
#include "bench/library_store.h"
#include "bench/raw_database.h"

namespace orvane::bench {

namespace {

constexpr const char* insertName = "insert 100,000 recordings and save once";
constexpr const char* openName = "open the file until the first fetch answers";
constexpr const char* openWithModelName = "open the file, reading the model resource too";
constexpr std::uint64_t insertedRecordings = 100'000;
constexpr std::uint64_t insertedSeed = 7;

/// The recordings to be inserted, with titles that stay where they are.
struct NewRecordings {
    RecordingStream stream{insertedRecordings, insertedSeed};
    std::vector<RecordingRow> rows;

    NewRecordings() {
        rows.reserve(insertedRecordings);
        for (RecordingRow row; stream.next(row);) {
            // They follow after what the file holds.
            row.startDate += static_cast<double>(dayCount * daySeconds);
            row.endDate += static_cast<double>(dayCount * daySeconds);
            rows.push_back(row);
        }
    }
};

class RawInsertion {
  public:
    explicit RawInsertion(const std::filesystem::path& file)
        : database_(file),
          lastKey_(database_.handle(), R"(SELECT "last" FROM "_keys" WHERE "entity" = 'Recording')"),
          insert_(database_.handle(),
                  R"(INSERT INTO "Recording" ("_id", "endDate", "idle", "startDate", "windowName", )"
                  R"("application") VALUES (?, ?, ?, ?, ?, ?))"),
          setLastKey_(database_.handle(), R"(UPDATE "_keys" SET "last" = ? WHERE "entity" = 'Recording')") {}

    double operator()(const std::vector<RecordingRow>& rows) {
        return microseconds([&] {
            database_.execute("BEGIN IMMEDIATE");
            lastKey_.step();
            std::int64_t key = lastKey_.integer(0);
            lastKey_.reset();
            for (const RecordingRow& row : rows) {
                insert_.bind(1, ++key);
                insert_.bind(2, row.endDate);
                insert_.bind(3, std::int64_t{row.idle});
                insert_.bind(4, row.startDate);
                insert_.bind(5, row.windowName);
                insert_.bind(6, row.application);
                insert_.run();
            }
            setLastKey_.bind(1, key);
            setLastKey_.run();
            database_.execute("COMMIT");
        });
    }

  private:
    RawDatabase database_;
    RawStatement lastKey_;
    RawStatement insert_;
    RawStatement setLastKey_;
};

class LibraryInsertion {
  public:
    LibraryInsertion(const std::filesystem::path& file, const StoreFiles& files)
        : store_(file, files.model()) {
        for (std::int64_t key = 1; key <= applicationCount; ++key)
            applications_.push_back(store_.application(applicationIdentifier(key)));
        // Nobody undoes an import.
        store_.context().setUndoManager(nullptr);
    }

    double operator()(const std::vector<RecordingRow>& rows) {
        return microseconds([&] {
            for (const RecordingRow& row : rows) {
                const Ref<OrvaneRecording> recording = store_.context().insert<OrvaneRecording>();
                recording->setStartDate(dateFromSecondsSinceEpoch(row.startDate));
                recording->setEndDate(dateFromSecondsSinceEpoch(row.endDate));
                recording->setIdle(row.idle);
                recording->setWindowName(row.windowName);
                recording->setApplication(applications_[static_cast<std::size_t>(row.application) - 1]);
            }
            store_.save();
        });
    }

  private:
    LibraryStore store_;
    std::vector<Ref<OrvaneApp>> applications_;
};

void benchmarkInsertion(Harness& harness, StoreFiles& files) {
    const std::filesystem::path file = files.fileWith(harness.options().recordings);
    // A file for each, which grow alike.
    const ScratchCopy rawCopy(file, files.workFolder());
    const ScratchCopy ourCopy(file, files.workFolder());
    RawInsertion raw(rawCopy.file());
    LibraryInsertion ours(ourCopy.file(), files);
    const NewRecordings recordings;
    const Medians medians = alternate(
        harness.options().rounds, [&] { return raw(recordings.rows); },
        [&] { return ours(recordings.rows); });
    harness.add({insertName, Unit::microseconds, medians.raw, medians.ours, {.ratio = 1.4}});
}

double openRaw(const std::filesystem::path& file, const std::string& identifier) {
    std::unique_ptr<RawDatabase> database;  // closed when the clock has stopped
    std::unique_ptr<RawStatement> select;
    return microseconds([&] {
        database = std::make_unique<RawDatabase>(file);
        select = std::make_unique<RawStatement>(
            database->handle(),
            R"(SELECT "_id", "color", "disabled", "identifier", "name", "group" FROM "Application" )"
            R"(WHERE "identifier" = ?)");
        select->bind(1, identifier);
        if (!select->step()) throw std::runtime_error("the application was not found");
    });
}

double openOurs(const std::filesystem::path& file, const std::string& identifier,
                const std::shared_ptr<const ManagedObjectModel>& model) {
    std::unique_ptr<LibraryStore> store;
    Ref<OrvaneApp> application;
    const double time = microseconds([&] {
        store = std::make_unique<LibraryStore>(file, model ? model : loadModel());
        application = store->application(identifier);
        if (!application) throw std::runtime_error("the application was not found");
    });
    application = nullptr;
    return time;
}

void benchmarkOpening(Harness& harness, StoreFiles& files) {
    const std::filesystem::path file = files.fileWith(harness.options().recordings);
    const std::string identifier = applicationIdentifier(busiestApplication);
    constexpr std::size_t openings = 101;
    const auto raw = [&] { return openRaw(file, identifier); };
    const Medians medians =
        alternate(openings, raw, [&] { return openOurs(file, identifier, files.model()); });
    harness.add({openName, Unit::microseconds, medians.raw, medians.ours, {.ratio = 1.5}});
    const Medians withModel = alternate(openings, raw, [&] { return openOurs(file, identifier, nullptr); });
    harness.add({openWithModelName, Unit::microseconds, withModel.raw, withModel.ours, {}});
}

}  // namespace

void runStoreBenchmarks(Harness& harness, StoreFiles& files) {
    if (harness.wantsAny({openName, openWithModelName})) benchmarkOpening(harness, files);
    if (harness.wants(insertName)) benchmarkInsertion(harness, files);
}

}  // namespace orvane::bench
