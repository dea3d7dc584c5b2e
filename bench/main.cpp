#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdlib>

#include "bench/benchmarks.h"
#include "bench/library_store.h"
#include "bench/raw_database.h"

namespace {

using namespace orvane::bench;

std::filesystem::path temporaryFolder() {
    const char* folder = std::getenv("TMPDIR");
    return folder && *folder ? folder : "/tmp";
}

void runAll(Harness& harness, StoreFiles& files) {
    runFetchBenchmarks(harness, files);
    runStoreBenchmarks(harness, files);
    runPollBenchmarks(harness, files);
    runApplicationBenchmarks(harness, files);
#ifdef ORVANE_BENCH_REPORTS
    runReportBenchmarks(harness, files);
#endif
    // The host program lies beside this one's folder.
    const std::filesystem::path here = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    runHostBenchmark(harness, files, here.parent_path() / "host" / "orvane");
}

}  // namespace

int main(int argumentCount, char** arguments) {
    CLI::App app{
        "Measures Orvane beside plain SQLite loops that do the same work in the same process.\n"
        "Figures are medians; they alternate with their loops. The store files are kept between runs in\n"
        "$TMPDIR/orvane-bench-UID.",
        "orvane-bench"};
    Options options;
    std::string json;
    bool quick = false;
    bool fresh = false;
    bool withoutMutexes = false;
    app.add_option("--json", json, "Write the figures to this file too")->type_name("FILE");
    app.add_option("--only", options.only, "Only figures whose names contain this")->type_name("TEXT");
    app.add_flag("--quick", quick, "100,000 recordings and fewer rounds");
    app.add_flag("--large", options.large, "Polls also with ten times as many recordings");
    app.add_flag("--fresh", fresh, "Make the store files anew");
    app.add_flag("--processor-time", processorTimeOnly,
                 "Processor time where wall time is usual, for a machine that has other work");
    app.add_flag("--raw-without-mutexes", withoutMutexes,
                 "Open plain SQLite's connections without its mutexes");
    CLI11_PARSE(app, argumentCount, arguments);
    if (quick) {
        options.recordings = 100'000;
        options.rounds = 5;
    }
    if (withoutMutexes) RawDatabase::leaveOutMutexes();
    // The made-up days begin at midnight in UTC.
    setenv("TZ", "UTC", 1);

    try {
        StoreFiles files(temporaryFolder() / ("orvane-bench-" + std::to_string(getuid())), loadModel(),
                         fresh);
        Harness harness(options);
        runAll(harness, files);
        harness.printTable();
        if (!json.empty() && !harness.writeJson(json)) throw std::runtime_error(json + ": cannot be written");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orvane-bench: %s\n", error.what());
        return 1;
    }
    return 0;
}
