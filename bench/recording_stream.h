#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "bench/random.h"

namespace orvane::bench {

inline constexpr std::int64_t applicationCount = 40;
inline constexpr std::int64_t groupCount = 6;
/// Key of the application that owns a quarter of all recordings.
inline constexpr std::int64_t busiestApplication = 1;

/// Midnight of 2016-01-01 in UTC, a Friday, and the days of the ten years from there on.
inline constexpr std::int64_t firstDay = 1451606400;
inline constexpr std::int64_t dayCount = 3653;
inline constexpr std::int64_t daySeconds = 86400;

/// Key counted from 1. An identifier is what a desktop calls its applications by.
std::string applicationIdentifier(std::int64_t application);

struct RecordingRow {
    double startDate = 0;  ///< whole seconds since the epoch
    double endDate = 0;
    bool idle = false;
    std::string_view windowName;   ///< lives as long as the stream
    std::int64_t application = 0;  ///< its key
};

/// Ten years of made-up recordings in order of time, always the same for the same number and seed: working
/// days from morning to evening, some of them past midnight, and few weekends; within a day each recording
/// begins when the one before ends. Titles repeat, 40 applications share the time very unevenly, 12 % is
/// idle.
class RecordingStream {
  public:
    RecordingStream(std::uint64_t recordings, std::uint64_t seed);

    /// False when all were given.
    bool next(RecordingRow& row);

  private:
    struct Day {
        std::int64_t begin;
        std::int64_t end;
        std::uint64_t recordings;
    };
    void planDays(std::uint64_t recordings);
    void makeTitles();
    std::int64_t spanLength();

    Random random_;
    std::vector<Day> days_;
    std::vector<std::string> titles_;  // those of one application side by side
    std::vector<double> shares_;       // of the applications up to and including each
    std::size_t day_ = 0;
    std::uint64_t left_ = 0;    // recordings of this day
    std::int64_t present_ = 0;  // end of the last recording
};

}  // namespace orvane::bench
