#include <algorithm>
#include <iostream>
#include <nlohmann/json.hpp>

#include "host/answer.h"
#include "host/nearest.h"
#include "host/reading_platform.h"
#include "host/terminal.h"
#include "store/orvane_app.h"
#include "store/orvane_group.h"

namespace orvane::host {

namespace {

struct Row {
    Ref<OrvaneApp> app;
    DecimalSeconds duration;
};

std::vector<Ref<OrvaneApp>> applications(ManagedObjectContext& context) {
    return context.fetch<OrvaneApp>(
        {std::string(OrvaneApp::entityName()), Predicate::withFormat("TRUEPREDICATE")});
}

std::vector<Row> rowsByTime(const std::vector<Ref<OrvaneApp>>& apps) {
    std::vector<Row> rows;
    for (const Ref<OrvaneApp>& app : apps) rows.push_back({app, app->duration()});
    std::stable_sort(rows.begin(), rows.end(),
                     [](const Row& left, const Row& right) { return left.duration > right.duration; });
    return rows;
}

std::string groupName(const Ref<OrvaneApp>& app) {
    const Ref<OrvaneGroup> group = app->group();
    return group ? std::string(group->name().value_or("")) : std::string();
}

void printJson(const std::vector<Row>& rows) {
    auto list = nlohmann::ordered_json::array();
    for (const Row& row : rows) {
        nlohmann::ordered_json json;
        json["identifier"] = jsonText(row.app->identifier());
        json["name"] = jsonText(row.app->name());
        json["color"] = jsonText(row.app->color());
        json["group"] = row.app->group() ? nlohmann::ordered_json(groupName(row.app)) : nullptr;
        json["disabled"] = row.app->disabledValue();
        json["duration"] = decimalText(row.duration);
        const auto last = row.app->lastUsedDate();
        json["lastUsedDate"] = last ? nlohmann::ordered_json(description(*last)) : nullptr;
        list.push_back(std::move(json));
    }
    print(list);
}

}  // namespace

int runApps(const CommonOptions& options) {
    OpenStore store(options.store);
    ManagedObjectContext* context = store.context();
    if (store.exists() && !context) return exitFailure;
    const std::vector<Row> rows = context ? rowsByTime(applications(*context)) : std::vector<Row>();
    if (store.readStatus() != exitSuccess) return exitFailure;
    if (options.json) {
        printJson(rows);
        return store.readStatus();
    }
    if (rows.empty()) {
        std::cout << "Nothing was recorded yet. `orvane track` records.\n";
        return exitSuccess;
    }
    std::vector<std::vector<std::string>> table;
    for (const Row& row : rows)
        table.push_back({swatch(row.app->colorValue()), displayText(row.app->identifier().value_or(""), 40),
                         displayText(row.app->name().value_or(""), 30), displayText(groupName(row.app), 20),
                         clockText(row.duration), localText(row.app->lastUsedDate()),
                         row.app->disabledValue() ? "disabled" : ""});
    printTable({"", "APPLICATION", "NAME", "GROUP", "TIME", "LAST USED", ""}, table, {4});
    return store.readStatus();
}

int runDisableApp(const std::string& identifier, bool disabled, const CommonOptions& options) {
    OpenStore store(options.store);
    ManagedObjectContext* context = store.context();
    if (store.exists() && !context) return exitFailure;
    std::vector<std::string> known;
    bool found = false;
    for (const Ref<OrvaneApp>& app : context ? applications(*context) : std::vector<Ref<OrvaneApp>>()) {
        known.emplace_back(app->identifier().value_or(""));
        if (known.back() != identifier) continue;
        app->setDisabled(disabled);
        found = true;
    }
    if (!found) {
        if (store.readStatus() != exitSuccess) return exitFailure;
        std::cerr << "orvane: no application \"" << identifier << "\" was recorded."
                  << nearestHint(identifier, known) << '\n';
        return exitUsage;
    }
    Error error;
    if (!context->save(&error)) {
        std::cerr << "orvane: " << error.localizedDescription() << '\n';
        return exitFailure;
    }
    if (options.json)
        std::cout << nlohmann::ordered_json({{"identifier", identifier}, {"disabled", disabled}}).dump()
                  << '\n';
    else
        std::cout << identifier << (disabled ? " is no longer recorded.\n" : " is recorded again.\n");
    return exitSuccess;
}

}  // namespace orvane::host
