#include "trials/tracker_kills.h"

#include <atomic>

#include "platform/simulated/unreliable_disk.h"
#include "trials/busy_user.h"
#include "trials/desk.h"
#include "trials/going_on.h"
#include "trials/killed_process.h"
#include "trials/store_contents.h"

namespace orvane::trials {

namespace {

constexpr int steps = 60;  // that the process works

/// What the process saves, one save after the other.
std::vector<std::string> savesOf(const std::filesystem::path& folder, std::uint64_t seed) {
    std::vector<std::string> saves{emptyStoreText};
    UnreliableDisk disk(folder);
    Desk desk(folder, disk.name());
    desk.context()->notificationCenter().addObserver(
        &saves,
        [&](const Notification&) { saves.push_back(readStore(folder / "Orvaning.db", disk.name()).text); },
        NSManagedObjectContextDidSaveNotification);
    BusyUser user(desk, seed);
    user.begin();
    for (int step = 0; step < steps; ++step) user.work();
    return saves;
}

/// Lets the other process go on for a moment of no known length.
void letPass(std::uint64_t turns) {
    for (std::atomic<std::uint64_t> passed = 0; passed < turns; ++passed) {
    }
}

}  // namespace

TrackerKills::TrackerKills(std::string program, const std::filesystem::path& folder, std::uint64_t seed)
    : program_(std::move(program)), folder_(folder), seed_(seed), random_(seed) {
    std::filesystem::create_directories(folder_ / "expected");
    saved_ = savesOf(folder_ / "expected", seed);
}

bool TrackerKills::step() {
    constexpr std::uint64_t longestMoment = 1'000'000;
    const std::filesystem::path folder = folder_ / "store";
    const std::filesystem::path file = folder / "Orvaning.db";
    std::filesystem::remove_all(folder);
    std::filesystem::create_directory(folder);

    KilledProcess tracker({program_, folder, std::to_string(seed_), std::to_string(steps)});
    const std::uint64_t wanted = random_() % saved_.size();
    std::uint64_t reported = 0;
    std::string line;
    // The last saves have no successor to be cut off in.
    while (reported < wanted && tracker.readLine(line)) reported = std::stoull(line);
    letPass(random_() % longestMoment);
    tracker.kill();
    while (tracker.readLine(line)) reported = std::stoull(line);
    ++kills_;

    const auto tell = [&](const std::string& what) {
        problem_ = what + " after a kill behind save " + std::to_string(reported) + " of seed " +
                   std::to_string(seed_);
        return false;
    };
    if (reported < wanted) return tell("the tracker ended early");
    StoreContents found{.isReadable = true, .integrity = "ok", .text = emptyStoreText};
    if (std::filesystem::exists(file)) {
        unfinishedSaves_ += std::filesystem::exists(folder / "Orvaning.db-journal");
        found = readStore(file, {});
    }
    if (!found.isReadable) return tell("the store cannot be read");
    if (found.integrity != "ok") return tell("the store is damaged (" + found.integrity + ")");
    const bool holdsNext = reported + 1 < saved_.size() && found.text == saved_[reported + 1];
    if (found.text != saved_[reported] && !holdsNext) return tell("what was saved is not there");
    if (const auto wrong = goOnTracking(folder, {}, found)) return tell(*wrong);
    return true;
}

}  // namespace orvane::trials
