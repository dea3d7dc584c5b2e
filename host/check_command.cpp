#include <iostream>
#include <nlohmann/json.hpp>

#include "host/answer.h"
#include "host/exchange/progress.h"
#include "host/reading_platform.h"
#include "persistence/store_check.h"

namespace orvane::host {

namespace {

using nlohmann::ordered_json;

ordered_json json(const StoreCheck& check) {
    ordered_json result{{"sound", check.isSound()}, {"cutSaveLeftOut", check.cutSaveLeftOut}};
    result["rows"] = ordered_json::object();
    for (const auto& [entity, rows] : check.rows) result["rows"][entity] = rows;
    result["findings"] = ordered_json::array();
    for (const StoreFinding& finding : check.findings)
        result["findings"].push_back(
            {{"kind", finding.kind == StoreFinding::Kind::damage ? "damage" : "oddity"},
             {"what", finding.what},
             {"rows", finding.rows}});
    return result;
}

void print(const StoreCheck& check, const std::string& file) {
    for (const StoreFinding& finding : check.findings)
        std::cout << (finding.kind == StoreFinding::Kind::damage ? "damage   " : "oddity   ")
                  << (finding.rows > 0 ? std::to_string(finding.rows) + " " : "") << finding.what << '\n';
    if (check.cutSaveLeftOut)
        std::cout
            << "A save was cut off. It is taken back when the store is next written to, and was left out "
               "here.\n";
    std::cout << file << (check.isSound() ? " is sound" : " is not sound") << ':';
    const char* separator = " ";
    for (const auto& [entity, rows] : check.rows) {
        std::cout << separator << rows << ' ' << entity << (rows == 1 ? "" : "s");
        separator = ", ";
    }
    std::cout << (check.rows.empty() ? " nothing could be counted.\n" : ".\n");
    if (!check.isSound()) std::cout << "`orvane recover FROM TO` saves what can be read into a new file.\n";
}

}  // namespace

int runCheck(const CommonOptions& options) {
    OpenStore store(options.store);
    const auto file = options.store.value_or(store.tracker().applicationFilesDirectory()) / "Orvaning.db";
    if (!store.exists()) {
        std::cerr << "orvane: there is no store at \"" << file.string() << "\".\n";
        return exitUsage;
    }
    const auto model = store.tracker().managedObjectModel();
    if (!model) {
        std::cerr << "orvane: the library's data model is missing.\n";
        return exitFailure;
    }
    Progress progress;
    const auto next = [&](const std::string& subject) {
        progress.begin("Checking " + subject);
        progress.show(0, 0);
    };
    Error error;
    const auto check = checkStore(file, *model, std::chrono::system_clock::now(), next, &error);
    progress.clear();
    if (!check) {
        std::cerr << "orvane: " << error.localizedDescription() << '\n';
        return exitFailure;
    }
    if (options.json)
        print(json(*check));
    else
        print(*check, file.string());
    return check->isSound() ? exitSuccess : exitFailure;
}

}  // namespace orvane::host
