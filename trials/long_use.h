#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "reporting/range_item.h"
#include "trials/desk.h"
#include "trials/use_ledger.h"

namespace orvane::trials {

/// Days of use of one tracker, from a seed, with a host beside it that edits, reports and deletes. All that
/// the library answers is compared with a ledger. The same for the same seed.
class LongUse {
  public:
    /// The desk must outlive this; its store, in `folder`, must be empty. Presence is read through the shared
    /// tracker, on the same store.
    LongUse(Desk& desk, const std::filesystem::path& folder, std::uint64_t seed);
    ~LongUse() { Orvane::resetShared(); }
    LongUse(const LongUse&) = delete;
    LongUse& operator=(const LongUse&) = delete;

    /// One more day, with the host's work after it; every seventh brings reports over everything. False, and
    /// nothing is done any more, once something was wrong.
    bool day();

    std::uint64_t days() const { return days_; }
    /// Looks at the desktop that the library took.
    std::uint64_t polls() const { return seconds_ / 10; }
    std::uint64_t reports() const { return reports_; }
    /// Seconds that were compared with the ledger, each time they were.
    std::uint64_t comparedSeconds() const { return compared_; }
    /// What was wrong; none as long as all is well.
    const std::optional<std::string>& problem() const { return problem_; }

  private:
    using Seconds = std::map<std::string, std::int64_t>;

    std::int64_t upTo(std::int64_t most);
    void work(std::int64_t seconds);
    Stretch makeStretch(std::int64_t most);
    void play(const Stretch& stretch);
    void edit();
    void forgetOne();
    void compareToday();
    void compareInChild();
    void compareWithFile();
    void compare(const std::string& what, const Seconds& expected, const std::vector<Ref<RangeItem>>& items);
    void complain(const std::string& what);

    Desk& desk_;
    std::filesystem::path file_;
    std::mt19937_64 random_;
    UseLedger ledger_;
    std::int64_t dayBegin_ = 0;  // seconds since the Unix epoch
    std::uint64_t days_ = 0;
    std::uint64_t seconds_ = 0;
    std::uint64_t reports_ = 0;
    std::uint64_t compared_ = 0;
    std::optional<std::string> problem_;
};

}  // namespace orvane::trials
