#include <iostream>
#include <nlohmann/json.hpp>

#include "host/command.h"
#include "host/exchange/interruption.h"
#include "host/exchange/progress.h"
#include "host/reading_platform.h"
#include "persistence/store_recovery.h"

namespace orvane::host {

namespace {

using nlohmann::ordered_json;

ordered_json json(const RecoveryReport& report) {
    ordered_json result;
    result["entities"] = ordered_json::object();
    for (const RecoveredEntity& entity : report.entities)
        result["entities"][entity.name] = {{"saved", entity.rows},
                                           {"fromLoosePages", entity.looseRows},
                                           {"missingAtMost", entity.missingRows},
                                           {"standIns", entity.standIns}};
    result["damagedPages"] = report.damagedPages;
    result["missingPages"] = report.missingPages;
    result["unreadableBytes"] = report.unreadableBytes;
    result["schemaLost"] = report.schemaLost;
    return result;
}

void print(const RecoveryReport& report) {
    for (const RecoveredEntity& entity : report.entities) {
        std::cout << entity.name << "s: " << entity.rows << " saved";
        if (entity.missingRows > 0) std::cout << ", at most " << entity.missingRows << " missing";
        if (entity.looseRows > 0)
            std::cout << "; " << entity.looseRows << " of them lay on pages that nothing led to";
        if (entity.standIns > 0)
            std::cout << "; " << entity.standIns
                      << " more made to stand in for lost ones that others belong to";
        std::cout << ".\n";
    }
    if (report.schemaLost) std::cout << "The list of tables was lost; rows were told apart by their looks.\n";
    if (report.damagedPages > 0) std::cout << "Damaged pages: " << report.damagedPages << ".\n";
    if (report.missingPages > 0)
        std::cout << "Pages missing at the end of the file: " << report.missingPages << ".\n";
    if (report.unreadableBytes > 0)
        std::cout << "Bytes that the disk did not give: " << report.unreadableBytes << ".\n";
}

/// What stands for an application or group that only its key is left of.
std::optional<std::string> standInText(const EntityDescription& entity, const std::string& attribute,
                                       std::int64_t key) {
    if (attribute == "name") return "Lost " + entity.name + " " + std::to_string(key);
    if (attribute == "identifier") return "lost." + entity.name + "." + std::to_string(key);
    return std::nullopt;
}

}  // namespace

int runRecover(const std::filesystem::path& from, const std::filesystem::path& to,
               const CommonOptions& options) {
    Platform::install(makeReadingPlatform());
    const auto model = StoreStack().managedObjectModel();
    if (!model) {
        std::cerr << "orvane: the library's data model is missing.\n";
        return exitFailure;
    }
    const Interruption interruption;
    Progress progress;
    RecoveryOptions recovery;
    recovery.standInText = standInText;
    recovery.advance = [&](const std::string& phase, std::uint64_t done, std::uint64_t total) {
        progress.begin(phase);
        progress.advance(done, total);
    };
    recovery.isInterrupted = Interruption::requested;
    Error error;
    const auto report = recoverStore(from, to, *model, recovery, &error);
    progress.clear();
    if (!report) {
        std::cerr << "orvane: "
                  << (error ? error.localizedDescription() : "interrupted; nothing was written.") << '\n';
        return exitFailure;
    }
    if (options.json)
        std::cout << json(*report).dump(2) << '\n';
    else
        print(*report);
    return exitSuccess;
}

}  // namespace orvane::host
