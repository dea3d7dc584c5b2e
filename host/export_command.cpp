#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "host/answer.h"
#include "host/date_range.h"
#include "host/exchange/csv_writer.h"
#include "host/exchange/exchange_format.h"
#include "host/exchange/interruption.h"
#include "host/exchange/json_lines_writer.h"
#include "host/exchange/store_exporter.h"
#include "host/nearest.h"
#include "host/reading_platform.h"

namespace orvane::host {

namespace {

void printSummary(const StoreExporter& exporter, bool csv, bool json) {
    // Groups and applications stand in the rows of a CSV file, and nowhere else.
    if (json) {
        nlohmann::ordered_json summary{{"recordings", exporter.recordingCount()}};
        if (!csv) {
            summary["applications"] = exporter.applicationCount();
            summary["groups"] = exporter.groupCount();
        }
        std::cout << summary.dump() << '\n';
        return;
    }
    std::cout << "Exported " << counted(exporter.recordingCount(), "recording");
    if (!csv)
        std::cout << ", " << counted(exporter.applicationCount(), "application") << " and "
                  << counted(exporter.groupCount(), "group");
    std::cout << ".\n";
}

}  // namespace

int runExport(const ExportOptions& options) {
    std::optional<std::filesystem::path> file = options.output;
    if (file == std::filesystem::path("-")) file.reset();
    auto format = options.format ? exchangeFormatNamed(*options.format)
                  : file         ? exchangeFormatOf(*file)
                                 : ExchangeFormat::jsonLines;
    if (options.format && (!format || format == ExchangeFormat::buckets))
        return fail("\"" + *options.format + "\" is no format to export in." +
                        nearestHint(*options.format, {"jsonl", "csv"}) + " Write jsonl or csv.",
                    exitUsage);
    if (!format || format == ExchangeFormat::buckets)
        return fail("the name of \"" + file->string() +
                        "\" tells no format. Name it .jsonl or .csv, or add --format jsonl or --format csv.",
                    exitUsage);

    const Interruption interruption;
    OpenStore store(options.common.store);
    std::string problem;
    const auto range = parseDateRange(options.range, Platform::current().clock().now(), problem);
    if (!range) return fail(problem, exitUsage);
    ManagedObjectContext* context = store.context();
    if (store.exists() && !context) return exitFailure;

    OutputFile output(file, options.force);
    if (!output.problem().empty()) return fail(output.problem(), exitFailure);
    std::unique_ptr<ExchangeWriter> writer;
    const bool csv = format == ExchangeFormat::csv;
    if (csv)
        writer = std::make_unique<CsvWriter>(output);
    else
        writer = std::make_unique<JsonLinesWriter>(output);

    Progress progress;
    std::optional<StoreExporter> exporter;
    if (context) {
        exporter.emplace(*context, *writer, progress);
        Error error;
        // "all" means what has no date, too.
        const bool exported = exporter->run(options.range == "all" ? std::nullopt : range, &error);
        progress.clear();
        if (!exported) return fail(error.localizedDescription(), exitFailure);
    } else {
        writer->begin();
    }
    if (Interruption::requested()) return fail("interrupted; nothing was exported.", exitFailure);
    if (!output.finish()) return fail(output.problem(), exitFailure);
    if (file && exporter) printSummary(*exporter, csv, options.common.json);
    return exitSuccess;
}

}  // namespace orvane::host
