#pragma once

#include <cstddef>
#include <map>
#include <string>

namespace orvane::host {

/// What became of an input.
struct ImportReport {
    std::size_t taken = 0;        ///< recordings written to the store
    std::size_t takenInPart = 0;  ///< recordings of the input of which only a part was written
    std::size_t newGroups = 0;
    std::size_t newApplications = 0;
    std::size_t merged = 0;  ///< events that went on with the one before and became one recording with it

    // Left out.
    std::size_t alreadyStored = 0;  ///< an identical recording was stored
    std::size_t overlapping = 0;    ///< their time is covered by what is stored
    std::size_t coveredWithin = 0;  ///< events whose time earlier events of the same file cover
    std::size_t zeroDuration = 0;
    std::size_t negativeDuration = 0;
    std::size_t malformed = 0;
    std::string firstMalformed;                     ///< where the first of those stands, and what is wrong
    std::map<std::string, std::size_t> otherKinds;  ///< events by the type of their bucket
};

}  // namespace orvane::host
