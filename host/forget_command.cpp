#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <nlohmann/json.hpp>

#include "host/answer.h"
#include "host/date_range.h"
#include "host/exchange/interruption.h"
#include "host/exchange/progress.h"
#include "host/exchange/stored_objects.h"
#include "host/forgetting.h"
#include "host/item_lookup.h"
#include "host/reading_platform.h"
#include "host/terminal.h"
#include "persistence/store_erasure.h"
#include "store/orvane_group.h"
#include "util/day_boundaries.h"

namespace orvane::host {

namespace {

std::string listed(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : ", ") + displayText(name, 60);
    return text;
}

/// A day's end is told as its last whole second; nothing of that day may stay.
ForgottenTime forgottenTime(const DateRange& range) {
    const bool isDayEnd = range.to == orvaneDayEnd(range.to);
    return {range.from, isDayEnd ? range.to + Date::duration(1) : range.to};
}

/// The store as it is opened to delete from it.
class ErasingStore {
  public:
    /// Check `context` before use.
    ErasingStore(const std::filesystem::path& folder, std::shared_ptr<const ManagedObjectModel> model,
                 Error* error)
        : coordinator_(std::make_shared<PersistentStoreCoordinator>(
              std::move(model),
              std::vector<const EntityClass*>{&entityClass<OrvaneApp>(), &entityClass<OrvaneGroup>(),
                                              &entityClass<OrvaneRecording>()})) {
        if (!coordinator_->addPersistentStore(NSSQLiteStoreType, {}, folder / "Orvaning.db",
                                              erasingStoreOptions(), error))
            return;
        context_ = std::make_unique<ManagedObjectContext>();
        context_->setPersistentStoreCoordinator(coordinator_);
    }

    ManagedObjectContext* context() const { return context_.get(); }
    bool erase(Error* error) { return eraseRemains(*coordinator_, error); }

  private:
    std::shared_ptr<PersistentStoreCoordinator> coordinator_;
    std::unique_ptr<ManagedObjectContext> context_;
};

/// The applications that the word means; none, after a message, when it means none or several.
std::optional<std::vector<Ref<OrvaneApp>>> applications(ManagedObjectContext& context,
                                                        const std::string& word, int& status) {
    Error error;
    const auto stored = storedObjects<OrvaneApp>(context, &error);
    if (!stored) {
        status = fail(error);
        return std::nullopt;
    }
    std::vector<ItemName> names;
    for (const Ref<OrvaneApp>& app : *stored)
        names.push_back({std::string(app->identifier().value_or("")), std::string(app->name().value_or(""))});
    const ItemLookup lookup = lookUp(word, names, "application");
    if (!lookup.problem.empty()) {
        status = fail(lookup.problem, exitUsage);
        return std::nullopt;
    }
    std::vector<Ref<OrvaneApp>> result;
    for (const std::size_t index : lookup.found) result.push_back((*stored)[index]);
    return result;
}

/// What is asked for, looked up in one context.
std::optional<Forgetting> forgettingIn(ManagedObjectContext& context, const ForgetOptions& options,
                                       const std::optional<ForgottenTime>& time, int& status) {
    if (!options.application) return Forgetting(context, time, std::nullopt);
    auto found = applications(context, *options.application, status);
    return found ? std::optional(Forgetting(context, time, std::move(found))) : std::nullopt;
}

std::string sentence(const ForgetReport& report) {
    std::string text = counted(report.recordings, "recording");
    if (report.cut > 0)
        text += " and part of " + std::to_string(report.cut) + (report.recordings ? " more" : "");
    return text + " (" + clockText(report.duration) + ")";
}

bool isConfirmed(const ForgetReport& report) {
    std::cerr << "This deletes " << sentence(report) << " beyond recall. Go on? [y/N] " << std::flush;
    std::string answer;
    std::getline(std::cin, answer);
    return answer == "y" || answer == "Y" || answer == "yes";
}

void tell(const ForgetReport& report, bool json) {
    if (json) {
        const nlohmann::ordered_json text{{"recordings", report.recordings},
                                          {"cut", report.cut},
                                          {"duration", decimalText(report.duration)},
                                          {"removedApplications", report.removedApplications},
                                          {"keptApplications", report.keptApplications}};
        print(text);
        return;
    }
    std::cout << "Deleted " << sentence(report) << ".\n";
    if (!report.removedApplications.empty())
        std::cout << "Deleted with them, as nothing is left of it: " << listed(report.removedApplications)
                  << ".\n";
    if (!report.keptApplications.empty())
        std::cout << "Still listed, as it is in a group or switched off: " << listed(report.keptApplications)
                  << ".\n";
}

/// Deletes and saves under one lock, so that no tracker writes in between.
int forget(ErasingStore& store, const ForgetOptions& options, const std::optional<ForgottenTime>& time) {
    ManagedObjectContext& context = *store.context();
    Progress progress;
    progress.begin("Deleting");
    Error error;
    ForgetReport report;
    {
        const WriteScope scope(context);
        int status = exitSuccess;
        auto forgetting = forgettingIn(context, options, time, status);
        if (!forgetting) return status;
        auto found = forgetting->find(&error);
        if (!found) return fail(error);
        report = std::move(*found);
        forgetting->apply(report);
        progress.show(0, 0);
        if (Interruption::requested()) return fail("interrupted; nothing was deleted.", exitFailure);
        if (context.hasChanges() && !context.save(&error)) return fail(error);
    }
    context.reset();
    progress.begin("Overwriting what is left of it");
    progress.show(0, 0);
    const bool erased = store.erase(&error);
    progress.clear();
    tell(report, options.common.json);
    if (erased) return exitSuccess;
    return fail("it was deleted, but not everything could be overwritten. " + error.localizedDescription(),
                exitFailure);
}

}  // namespace

int runForget(const ForgetOptions& options) {
    if (!options.range && !options.application)
        return fail("name what to forget: a range (`all` for everything), --app, or both.", exitUsage);
    std::optional<ForgottenTime> time;
    if (options.range) {
        std::string problem;
        const auto range = parseDateRange(*options.range, std::chrono::system_clock::now(), problem);
        if (!range) return fail(problem, exitUsage);
        // Only "all" is about recordings without dates too.
        if (*options.range != "all") time = forgottenTime(*range);
    }
    std::filesystem::path folder;
    std::shared_ptr<const ManagedObjectModel> model;
    int status = exitSuccess;
    {
        OpenStore store(options.common.store);
        folder = options.common.store.value_or(store.tracker().applicationFilesDirectory());
        if (!store.exists()) return fail("nothing was recorded yet.", exitUsage);
        // What SQLite cannot hold in memory while it writes the file anew goes beside the store. It asks for
        // the folder once, before the first database is opened.
        ::setenv("SQLITE_TMPDIR", folder.c_str(), 1);
        ManagedObjectContext* context = store.context();
        if (!context) return exitFailure;
        if (auto forgetting = forgettingIn(*context, options, time, status)) {
            Error error;
            const auto found = forgetting->find(&error);
            if (!found) return fail(error);
            if (!options.yes) {
                if (::isatty(STDIN_FILENO) == 0)
                    return fail("would delete " + sentence(*found) + ". Add --yes to do so.", exitUsage);
                if (!isConfirmed(*found)) return fail("nothing was deleted.", exitFailure);
            }
        }
        model = store.tracker().managedObjectModel();
    }
    const Interruption interruption;
    Error error;
    ErasingStore store(folder, model, &error);
    if (!store.context()) return fail(error);
    if (status == exitSuccess) return forget(store, options, time);
    // A run that was cut off may have deleted the application already, but not have overwritten it.
    if (!store.erase(&error)) fail(error);
    return status;
}

}  // namespace orvane::host
