#include <iostream>
#include <nlohmann/json.hpp>

#include "host/answer.h"
#include "host/exchange/exchange_format.h"
#include "host/exchange/import_reading.h"
#include "host/exchange/interruption.h"
#include "host/exchange/store_importer.h"
#include "host/nearest.h"
#include "host/reading_platform.h"
#include "host/tracker_lock.h"

namespace orvane::host {

namespace {

constexpr const char* interrupted = "interrupted; nothing was imported.";

void printJson(const ImportReport& report) {
    nlohmann::ordered_json json{{"taken", report.taken},
                                {"takenInPart", report.takenInPart},
                                {"merged", report.merged},
                                {"newApplications", report.newApplications},
                                {"newGroups", report.newGroups}};
    json["leftOut"] = {{"alreadyStored", report.alreadyStored},
                       {"overlapping", report.overlapping},
                       {"coveredWithinFile", report.coveredWithin},
                       {"zeroDuration", report.zeroDuration},
                       {"negativeDuration", report.negativeDuration},
                       {"malformed", report.malformed},
                       {"otherKinds", report.otherKinds}};
    if (report.malformed > 0) json["firstMalformed"] = report.firstMalformed;
    std::cout << json.dump(2) << '\n';
}

void printText(const ImportReport& report) {
    std::cout << "Took " << counted(report.taken, "recording");
    if (report.takenInPart > 0)
        std::cout << "; of " << report.takenInPart << " only the part that was not covered yet";
    std::cout << ".\n";
    if (report.newApplications > 0) std::cout << counted(report.newApplications, "new application") << ".\n";
    if (report.newGroups > 0) std::cout << counted(report.newGroups, "new group") << ".\n";
    if (report.merged > 0)
        std::cout << "Merged " << counted(report.merged, "event") << " with the one before.\n";
    const auto leftOut = [](std::size_t count, const std::string& reason) {
        if (count > 0) std::cout << "Left out " << count << ": " << reason << ".\n";
    };
    leftOut(report.alreadyStored, "stored already");
    leftOut(report.overlapping, "their time is covered by what is stored");
    leftOut(report.coveredWithin, "their time is covered by earlier events of the file");
    leftOut(report.zeroDuration, "of no duration");
    leftOut(report.negativeDuration, "of negative duration");
    leftOut(report.malformed, "malformed (the first on " + report.firstMalformed + ")");
    for (const auto& [kind, count] : report.otherKinds)
        leftOut(count,
                kind.empty() ? "in a bucket without a type" : "in a bucket of the type \"" + kind + "\"");
}

/// Reads the file into the batch; all of it is good when this succeeds.
int read(const ImportOptions& options, ExchangeFormat format, ImportBatch& batch, ImportReport& report,
         Progress& progress) {
    progress.begin("Reading");
    InputFile input(options.file, progress);
    std::string problem;
    try {
        readImport(input, format, batch, report);
    } catch (const InputProblem& error) {
        problem = (options.file == "-" ? "standard input" : options.file.string()) + ":" +
                  std::to_string(error.line()) + ": " + error.what() + "; nothing was imported.";
    }
    progress.clear();
    // These two look like the end of the file to those who read it.
    if (Interruption::requested()) return fail(interrupted, exitFailure);
    if (!input.problem().empty()) return fail(input.problem(), exitUsage);
    return problem.empty() ? exitSuccess : fail(problem, exitUsage);
}

/// The folder imported into. No tracker uses it meanwhile: it might wait for the import's save in vain. A
/// store made for the import is removed again unless that succeeds.
class Destination {
  public:
    explicit Destination(std::filesystem::path folder) : folder_(std::move(folder)), lock_(folder_) {
        // A link to a file that is missing is not ours either.
        std::error_code ignored;
        isKept_ = std::filesystem::exists(std::filesystem::symlink_status(folder_ / "Orvaning.db", ignored));
    }
    ~Destination() {
        if (isKept_ || !lock_.isHeld()) return;
        std::error_code ignored;
        std::filesystem::remove(folder_ / "Orvaning.db", ignored);
        std::filesystem::remove(folder_ / "Orvaning.db-journal", ignored);
    }
    Destination(const Destination&) = delete;
    Destination& operator=(const Destination&) = delete;

    /// Why nothing may be imported there; empty when it may.
    const std::string& problem() const { return lock_.problem(); }
    void keep() { isKept_ = true; }

  private:
    std::filesystem::path folder_;
    TrackerLock lock_;
    bool isKept_;
};

}  // namespace

int runImport(const ImportOptions& options) {
    const auto format =
        options.format ? exchangeFormatNamed(*options.format) : exchangeFormatOf(options.file);
    if (options.format && !format)
        return fail("\"" + *options.format + "\" is no format." +
                        nearestHint(*options.format, {"jsonl", "csv", "buckets"}) +
                        " Write jsonl, csv or buckets.",
                    exitUsage);
    if (!format)
        return fail("the name of \"" + options.file.string() +
                        "\" tells no format. Add --format jsonl, --format csv or --format buckets.",
                    exitUsage);

    const Interruption interruption;
    Progress progress;
    ImportBatch batch;
    ImportReport report;
    if (const int status = read(options, *format, batch, report, progress); status != exitSuccess)
        return status;

    OpenStore store(options.common.store);
    Destination destination(options.common.store.value_or(store.tracker().applicationFilesDirectory()));
    if (!destination.problem().empty()) return fail(destination.problem(), exitFailure);
    ManagedObjectContext* context = store.contextForWriting();
    if (!context) return exitFailure;
    Error error;
    const bool imported = StoreImporter(*context, batch, report, progress).run(&error);
    progress.clear();
    if (!imported)
        return fail(error ? error.localizedDescription() + " Nothing was imported." : interrupted,
                    exitFailure);
    destination.keep();
    if (options.common.json)
        printJson(report);
    else
        printText(report);
    return exitSuccess;
}

}  // namespace orvane::host
