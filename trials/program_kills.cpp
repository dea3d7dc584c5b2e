#include "trials/program_kills.h"

#include <nlohmann/json.hpp>

#include "trials/killed_process.h"

namespace orvane::trials {

namespace {

/// What ends a recording's line, and thereby tells it from others.
std::string endOfLine(const nlohmann::json& report) {
    return std::string(report["idle"].get<bool>() ? " 1 " : " 0 ") +
           report["application"].get<std::string>() + " " + report["window"].get<std::string>() + "\n";
}

}  // namespace

ProgramKills::ProgramKills(std::string program, const std::filesystem::path& folder, std::uint64_t seed)
    : program_(std::move(program)), folder_(folder), random_(seed) {}

bool ProgramKills::step() {
    constexpr std::uint64_t mostReports = 8;
    KilledProcess tracker({program_, "track", "--json", "--store", folder_});
    std::optional<nlohmann::json> last;
    const auto take = [&](const std::string& line) {
        nlohmann::json report = nlohmann::json::parse(line, nullptr, false);
        if (report.is_object() && report["application"].is_string()) last = std::move(report);
    };
    std::string line;
    for (std::uint64_t wanted = random_() % mostReports; wanted > 0 && tracker.readLine(line); --wanted)
        take(line);
    tracker.kill();
    while (tracker.readLine(line)) take(line);
    ++kills_;

    const auto tell = [&](const std::string& what) {
        problem_ = what + " after kill " + std::to_string(kills_) + " of the program";
        return false;
    };
    const std::filesystem::path file = folder_ / "Orvaning.db";
    if (!std::filesystem::exists(file)) return last ? tell("there is no store") : true;
    const StoreContents found = readStore(file, {});
    if (!found.isReadable) return tell("the store cannot be read");
    if (found.integrity != "ok") return tell("the store is damaged (" + found.integrity + ")");
    if (!found.doubledApplications.empty())
        return tell("there are two applications " + found.doubledApplications);
    if (!holdsLines(found.text, before_.text, "recording ")) return tell("what was there before is gone");
    if (last && found.text.find(endOfLine(*last)) == std::string::npos)
        return tell("what was told to be recorded is not there: " + last->dump());
    before_ = found;
    return true;
}

}  // namespace orvane::trials
