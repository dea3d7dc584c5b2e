#include "trials/faulty_operations.h"

#include "trials/busy_user.h"
#include "trials/desk.h"

namespace orvane::trials {

namespace {

constexpr const char* kindNames[] = {"open", "read", "write", "truncate", "sync", "remove"};

}  // namespace

FaultyOperations::FaultyOperations(const std::filesystem::path& folder, std::uint64_t seed, int steps)
    : folder_(folder), seed_(seed), steps_(steps), disk_(folder) {
    std::vector<FileOperation> kinds;
    disk_.setObserver([&](const DiskOperation& operation) { kinds.push_back(operation.kind); });
    expected_ = run(0, DiskFault::fails);
    disk_.setObserver(nullptr);
    kinds.resize(operations_);
    kinds_ = std::move(kinds);
}

bool FaultyOperations::step() {
    if (problem_ || runs_ == allRuns()) return false;
    const std::size_t operation = runs_ / 2;
    const DiskFault fault = runs_ % 2 == 0 ? DiskFault::fails : DiskFault::cutShort;
    ++runs_;
    if (const auto wrong = wrongWith(run(operation + 1, fault), kinds_[operation]))
        problem_ = *wrong + " when operation " + std::to_string(operation + 1) + " (" +
                   kindNames[static_cast<int>(kinds_[operation])] + ") of seed " + std::to_string(seed_) +
                   (fault == DiskFault::fails ? " fails" : " is cut short");
    return !problem_;
}

StoreContents FaultyOperations::run(std::uint64_t operation, DiskFault fault) {
    constexpr double interval = 10;  // seconds, of the polls
    disk_.setFiles({});
    const std::uint64_t before = disk_.operations();
    disk_.failAt(operation == 0 ? 0 : before + operation, fault);
    {
        Desk desk(folder_, disk_.name());
        BusyUser user(desk, seed_);
        user.begin();
        // A poll that finds no store ends tracking until another application comes to the front.
        desk.activate();
        for (int step = 0; step < steps_; ++step) user.work();
        operations_ = disk_.operations() - before;
        // The poll that catches up.
        desk.pass(interval);
    }
    return readStore(folder_ / "Orvaning.db", disk_.name());
}

std::optional<std::string> FaultyOperations::wrongWith(const StoreContents& contents,
                                                       FileOperation faultyKind) const {
    if (!contents.isReadable) return "the store cannot be read";
    if (contents.integrity != "ok") return "the store is damaged (" + contents.integrity + ")";
    if (contents.text == expected_.text && contents.doubledApplications.empty()) return std::nullopt;
    // An application that cannot be looked up is taken for a new one.
    if (faultyKind == FileOperation::read && holdsLines(contents.text, expected_.text, ""))
        return std::nullopt;
    return "what was recorded is not there, or more than that is";
}

}  // namespace orvane::trials
