#include "tests/host/exchange_fixture.h"

#include <algorithm>
#include <cstdio>

#include "host/exchange/csv_writer.h"
#include "host/exchange/import_reading.h"
#include "host/exchange/json_lines_writer.h"
#include "host/exchange/store_exporter.h"
#include "host/exchange/store_importer.h"
#include "host/output_file.h"

namespace orvane::test {

namespace {

using namespace host;

std::string shown(std::optional<std::string_view> text) {
    return text ? "<" + std::string(*text) + ">" : "-";
}

std::string shown(std::optional<bool> flag) { return !flag ? "-" : *flag ? "yes" : "no"; }

std::string shown(std::optional<Date> date) {
    if (!date) return "-";
    char text[64];
    std::snprintf(text, sizeof text, "%a", secondsSinceEpoch(*date));
    return text;
}

std::string shown(const OrvaneGroup* group) {
    if (!group) return "-";
    return "{" + shown(group->identifier()) + shown(group->name()) + shown(group->category()) +
           shown(group->color()) + shown(group->disabled()) + "}";
}

std::string shown(const OrvaneApp* app) {
    if (!app) return "-";
    return "[" + shown(app->identifier()) + shown(app->name()) + shown(app->color()) +
           shown(app->disabled()) + shown(app->group().get()) + "]";
}

template <class T>
std::vector<Ref<T>> all(ManagedObjectContext& context) {
    return context.fetch<T>({std::string(T::entityName())});
}

ImportBatch read(const std::filesystem::path& file, ImportReport& report) {
    Progress progress;
    InputFile input(file, progress);
    ImportBatch batch;
    readImport(input, exchangeFormatOf(file).value(), batch, report);
    return batch;
}

}  // namespace

void ExchangeStore::open() {
    stack_ = std::make_unique<StoreStack>();
    stack_->setUrl(folder_);
}

Ref<OrvaneApp> ExchangeStore::insertApp(std::optional<std::string> identifier,
                                        std::optional<std::string> name, const Ref<OrvaneGroup>& group) {
    const auto app = OrvaneApp::insertInManagedObjectContext(context());
    app->setIdentifier(identifier);
    app->setName(name);
    app->setGroup(group);
    return app;
}

Ref<OrvaneRecording> ExchangeStore::insertRecording(const Ref<OrvaneApp>& app, std::optional<double> start,
                                                    std::optional<double> end, std::optional<bool> idle,
                                                    std::optional<std::string> window) {
    const auto recording = OrvaneRecording::insertInManagedObjectContext(context());
    recording->setApplication(app);
    if (start) recording->setStartDate(dateFromSecondsSinceEpoch(*start));
    if (end) recording->setEndDate(dateFromSecondsSinceEpoch(*end));
    recording->setIdle(idle);
    recording->setWindowName(window);
    return recording;
}

void ExchangeStore::save() {
    Error error;
    ASSERT_TRUE(context().save(&error)) << error.localizedDescription();
    open();
}

void ExchangeStore::exportTo(const std::filesystem::path& file, const std::optional<DateRange>& range) {
    OutputFile output(file, true);
    JsonLinesWriter jsonLines(output);
    CsvWriter csv(output);
    Progress progress;
    const bool isCsv = exchangeFormatOf(file) == ExchangeFormat::csv;
    StoreExporter exporter(context(), isCsv ? static_cast<ExchangeWriter&>(csv) : jsonLines, progress);
    Error error;
    ASSERT_TRUE(exporter.run(range, &error)) << error.localizedDescription();
    ASSERT_TRUE(output.finish()) << output.problem();
}

ImportReport ExchangeStore::import(const std::filesystem::path& file) {
    ImportReport report;
    try {
        const ImportBatch batch = read(file, report);
        Progress progress;
        Error error;
        EXPECT_TRUE(StoreImporter(context(), batch, report, progress).run(&error))
            << error.localizedDescription();
    } catch (const InputProblem& problem) {
        ADD_FAILURE() << file << ":" << problem.line() << ": " << problem.what();
    }
    open();
    return report;
}

ImportReport ExchangeStore::importText(const std::string& text, const std::string& extension) {
    const std::filesystem::path file = folder_.string() + "-input" + extension;
    writeBytes(file, text);
    return import(file);
}

std::vector<std::string> ExchangeStore::recordings() {
    std::vector<std::string> result;
    for (const auto& recording : all<OrvaneRecording>(context()))
        result.push_back(shown(recording->startDate()) + " " + shown(recording->endDate()) + " " +
                         shown(recording->idle()) + " " + shown(recording->windowName()) + " " +
                         shown(recording->application().get()));
    std::sort(result.begin(), result.end());
    return result;
}

std::vector<std::string> ExchangeStore::items() {
    std::vector<std::string> result;
    for (const auto& group : all<OrvaneGroup>(context()))
        result.push_back(shown(group.get()) + std::to_string(group->applications().size()));
    for (const auto& app : all<OrvaneApp>(context()))
        result.push_back(shown(app.get()) + std::to_string(app->recordings().size()));
    std::sort(result.begin(), result.end());
    return result;
}

std::string ExchangeStore::summary() {
    std::string result;
    for (const auto& recording : context().fetch<OrvaneRecording>(
             {std::string(OrvaneRecording::entityName()), std::nullopt, {{"startDate"}, {"endDate"}}})) {
        char text[160];
        const std::string window(recording->windowName().value_or("-"));
        std::snprintf(text, sizeof text, recording->idleValue() ? "(%g-%g %s) " : "%g-%g %s ",
                      secondsSinceEpoch(*recording->startDate()), secondsSinceEpoch(*recording->endDate()),
                      window.c_str());
        result += text;
    }
    if (!result.empty()) result.pop_back();
    return result;
}

ExchangeFixture::ExchangeFixture() {
    desktop().fileManager().setResourceDirectory(ORVANE_SOURCE_DIR "/store");
    Platform::install(desktop_);
}

ExchangeFixture::~ExchangeFixture() { Platform::install(nullptr); }

std::string refusal(const std::filesystem::path& file) {
    ImportReport report;
    try {
        read(file, report);
        return {};
    } catch (const InputProblem& problem) {
        return std::to_string(problem.line()) + ": " + problem.what();
    }
}

}  // namespace orvane::test
