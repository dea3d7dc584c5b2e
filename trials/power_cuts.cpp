#include "trials/power_cuts.h"

#include <functional>
#include <string_view>

#include "trials/going_on.h"

namespace orvane::trials {

namespace {

std::size_t hashOf(const UnreliableDisk::Files& files, std::size_t completeSaves) {
    std::size_t result = completeSaves;
    const auto add = [&](std::string_view text) {
        result = result * 31 + std::hash<std::string_view>{}(text);
    };
    for (const auto& [path, bytes] : files) {
        add(path);
        add({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }
    return result;
}

}  // namespace

PowerCuts::PowerCuts(const std::filesystem::path& folder, std::uint64_t seed)
    : folder_(folder),
      seed_(seed),
      disk_(folder),
      restored_(folder),
      desk_(folder, disk_.name()),
      user_(desk_, seed) {
    saved_.push_back({.isReadable = true, .integrity = "ok", .text = emptyStoreText});
    disk_.setObserver([this](const DiskOperation& operation) { noteCut(operation); });
}

bool PowerCuts::step() {
    isWatching_ = true;
    if (hasBegun_) {
        user_.work();
    } else {
        hasBegun_ = true;
        desk_.use();
        // Opening creates the file, at whose operations the power goes too.
        if (OrvaneManagedObjectContext* context = desk_.context())
            context->notificationCenter().addObserver(
                this, [this](const Notification&) { noteSave(); }, NSManagedObjectContextDidSaveNotification);
        user_.begin();
    }
    isWatching_ = false;
    for (const Cut& cut : open_) {
        judge(cut);
        if (problem_) return false;
    }
    open_.clear();
    return true;
}

void PowerCuts::noteCut(const DiskOperation& operation) {
    if (!isWatching_) return;
    open_.push_back({operation.number, saved_.size() - 1, disk_.afterPowerCut(seed_ ^ operation.number)});
}

void PowerCuts::noteSave() {
    // Reading the file is no part of the trial.
    isWatching_ = false;
    saved_.push_back(readStore(file(), disk_.name()));
    isWatching_ = true;
}

void PowerCuts::judge(const Cut& cut) {
    const auto tell = [&](const std::string& what) {
        problem_ = what + " after a power cut at operation " + std::to_string(cut.operation) + " of seed " +
                   std::to_string(seed_);
    };
    ++cuts_;
    const std::size_t hash = hashOf(cut.left, cut.completeSaves);
    if (const auto known = sound_.find(hash); known != sound_.end()) {
        lastSavesLost_ += known->second;
        return;
    }
    restored_.setFiles(cut.left);
    const StoreContents found = readStore(file(), restored_.name());
    if (!found.isReadable) return tell("the store cannot be read");
    if (found.integrity != "ok") return tell("the store is damaged (" + found.integrity + ")");
    if (!found.doubledApplications.empty())
        return tell("there are two applications " + found.doubledApplications);
    // The journal of the last complete save may come back with its folder's old entry and undo it.
    const std::size_t complete = cut.completeSaves;
    const auto holds = [&](std::size_t save) {
        return save < saved_.size() && found.text == saved_[save].text;
    };
    const bool lacksLast = !holds(complete) && !holds(complete + 1);
    if (lacksLast && (complete == 0 || !holds(complete - 1))) return tell("what was saved is not there");
    lastSavesLost_ += lacksLast;
    if (const auto wrong = goOnTracking(folder_, restored_.name(), found)) return tell(*wrong);
    sound_.emplace(hash, lacksLast);
}

}  // namespace orvane::trials
