#include "bench/generator.h"

#include <stdlib.h>

#include <cstdio>
#include <stdexcept>

#include "bench/library_store.h"
#include "bench/raw_database.h"

namespace orvane::bench {

namespace {

constexpr const char* storeFileName = "Orvaning.db";
constexpr std::uint64_t seed = 20160101;
constexpr int generation = 1;  // to be raised when the contents change

/// FNV-1a, so that a file made for another model is not used.
std::uint64_t fingerprint(std::string_view text) {
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
    return hash;
}

void writeGroups(RawDatabase& database) {
    RawStatement insert(database.handle(),
                        R"(INSERT INTO "Group" ("_id", "color", "identifier", "name") VALUES (?, ?, ?, ?))");
    for (std::int64_t key = 1; key <= groupCount; ++key) {
        char identifier[48];
        std::snprintf(identifier, sizeof identifier, "00000000-0000-4000-8000-%012lld",
                      static_cast<long long>(key));
        const std::string name = "Group " + std::to_string(key);
        insert.bind(1, key);
        insert.bind(2, std::string_view("336699FF"));
        insert.bind(3, std::string_view(identifier));
        insert.bind(4, name);
        insert.run();
    }
}

void writeApplications(RawDatabase& database) {
    RawStatement insert(
        database.handle(),
        R"(INSERT INTO "Application" ("_id", "color", "identifier", "name", "group") VALUES (?, ?, ?, ?, ?))");
    for (std::int64_t key = 1; key <= applicationCount; ++key) {
        const std::string identifier = applicationIdentifier(key);
        const std::string name = "Application " + std::to_string(key);
        insert.bind(1, key);
        insert.bind(2, std::string_view("993366FF"));
        insert.bind(3, identifier);
        insert.bind(4, name);
        // Every seventh application is in no group.
        if (key % (groupCount + 1) != 0)
            insert.bind(5, key % (groupCount + 1));
        else
            insert.bindNull(5);
        insert.run();
    }
}

void writeRecordings(RawDatabase& database, std::uint64_t recordings) {
    RawStatement insert(database.handle(),
                        R"(INSERT INTO "Recording" ("_id", "endDate", "idle", "startDate", "windowName", )"
                        R"("application") VALUES (?, ?, ?, ?, ?, ?))");
    RecordingStream stream(recordings, seed);
    RecordingRow row;
    for (std::int64_t key = 1; stream.next(row); ++key) {
        insert.bind(1, key);
        insert.bind(2, row.endDate);
        insert.bind(3, std::int64_t{row.idle});
        insert.bind(4, row.startDate);
        insert.bind(5, row.windowName);
        insert.bind(6, row.application);
        insert.run();
    }
}

void writeLastKeys(RawDatabase& database, std::uint64_t recordings) {
    RawStatement write(database.handle(),
                       R"(INSERT OR REPLACE INTO "_keys" ("entity", "last") VALUES (?, ?))");
    const auto put = [&](std::string_view entity, std::int64_t last) {
        write.bind(1, entity);
        write.bind(2, last);
        write.run();
    };
    put("Group", groupCount);
    put("Application", applicationCount);
    put("Recording", static_cast<std::int64_t>(recordings));
}

void fill(const std::filesystem::path& file, const std::shared_ptr<const ManagedObjectModel>& model,
          std::uint64_t recordings) {
    LibraryStore(file, model);  // makes the file with the schema and closes it
    RawDatabase database(file);
    database.execute("PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; PRAGMA cache_size=-262144; BEGIN");
    writeGroups(database);
    writeApplications(database);
    writeRecordings(database, recordings);
    writeLastKeys(database, recordings);
    database.execute("COMMIT; PRAGMA journal_mode=DELETE");
}

}  // namespace

StoreFiles::StoreFiles(std::filesystem::path folder, std::shared_ptr<const ManagedObjectModel> model,
                       bool fresh)
    : folder_(std::move(folder)), model_(std::move(model)), fresh_(fresh) {
    std::filesystem::create_directories(folder_);
}

std::filesystem::path StoreFiles::folderWith(std::uint64_t recordings) {
    char name[80];
    std::snprintf(name, sizeof name, "store-%d-%llu-%016llx", generation,
                  static_cast<unsigned long long>(recordings),
                  static_cast<unsigned long long>(fingerprint(model_->text())));
    const std::filesystem::path result = folder_ / name;
    const std::filesystem::path marker = result / "complete";
    if (std::filesystem::exists(marker) && (!fresh_ || made_.contains(result))) return result;
    std::filesystem::remove_all(result);
    std::filesystem::create_directories(result);
    std::fprintf(stderr, "Making a store of %llu recordings in %s\n",
                 static_cast<unsigned long long>(recordings), result.c_str());
    fill(result / storeFileName, model_, recordings);
    std::filesystem::create_directory(marker);
    made_.insert(result);
    return result;
}

std::filesystem::path StoreFiles::fileWith(std::uint64_t recordings) {
    return folderWith(recordings) / storeFileName;
}

ScratchCopy::ScratchCopy(const std::filesystem::path& file, const std::filesystem::path& parent) {
    std::string name = (parent / "orvane-bench-scratch-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no folder can be made in " + parent.string());
    folder_ = name;
    file_ = folder_ / file.filename();
    std::filesystem::copy_file(file, file_);
}

ScratchCopy::~ScratchCopy() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

}  // namespace orvane::bench
