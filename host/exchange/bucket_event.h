#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orvane::host {

/// One event of a bucket, whose dates were found good.
struct BucketEvent {
    enum class Presence : std::uint8_t { unknown, away, here };

    std::int64_t start = 0;         ///< microseconds since the Unix epoch
    std::int64_t end = 0;           ///< the same
    std::uint32_t application = 0;  ///< number of an application in the batch, counted from 1; 0 for none
    std::uint32_t window = 0;       ///< number of a window in the batch; 0 for none
    std::uint32_t line = 0;         ///< where it stands in the file
    Presence presence = Presence::unknown;
};

/// One stream of events from one computer.
struct Bucket {
    std::string identifier;
    std::optional<std::string> type;
    std::string host;
    std::vector<BucketEvent> events;
};

inline constexpr const char* windowBucketType = "currentwindow";
inline constexpr const char* presenceBucketType = "afkstatus";

}  // namespace orvane::host
