#pragma once

#include <string>

namespace orvane {

/// Posted by the platform's default notification center, on the main thread, after another backend is in use
/// for a service, one that was missing is there or one that was there is missing.
inline constexpr const char* DesktopHealthDidChangeNotification = "OrvaneDesktopHealthDidChangeNotification";

/// How well one service of the desktop works. All texts are in English, for people, without a full stop.
struct ServiceHealth {
    /// What it is about, such as "windows" or "idle time".
    std::string service;
    /// Works, as well as it can on this desktop.
    bool isGood = false;
    /// What is in use for it; empty when nothing is.
    std::string backend;
    /// What it sees at the moment; empty when nothing is in use.
    std::string sees;
    /// What is missing, and what that costs; empty when nothing is.
    std::string problem;
    /// The one command that mends it; empty when no command does.
    std::string remedy;

    bool operator==(const ServiceHealth&) const = default;
};

}  // namespace orvane
