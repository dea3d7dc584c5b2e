#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include "host/replay/local_time_zone.h"
#include "host/replay/trace_line.h"
#include "host/replay/trace_output.h"
#include "platform/simulated/simulated_platform.h"
#include "tracker/orvane.h"

namespace orvane::host {

/// One run of a trace: the simulated desktop, the tracker on it and what is printed. While it lives its
/// desktop is the process's platform.
class ReplaySession {
  public:
    /// `output` must outlive the session.
    ReplaySession(const TraceHeader& header, std::ostream& output, std::filesystem::path supportFolder,
                  const std::filesystem::path& resourceFolder);
    ~ReplaySession();
    ReplaySession(const ReplaySession&) = delete;
    ReplaySession& operator=(const ReplaySession&) = delete;

    /// What is stored in the support folder will not outlive the run and need not reach the disk. Call before
    /// `begin`.
    void keepStoreInMemory() { platform_->fileManager().failingFileSystem().keepInMemory(supportFolder_); }

    /// Does what the header asks for at the very start.
    void begin();
    /// Whether the shared tracker was made.
    bool hasTracker() const { return hasTracker_; }
    /// Runs what is due until then, then the line. Some problems show only now; the problem is returned then,
    /// and the run has to end.
    std::optional<std::string> run(const TraceLine& line);

  private:
    using Problem = std::optional<std::string>;

    Problem apply(const DesktopAction& action);
    Problem apply(const InputAction& action);
    Problem apply(const IdleAction& action);
    Problem apply(const NotifyAction& action);
    Problem apply(const DefaultsAction& action);
    Problem apply(const TrackerAction& action);
    Problem apply(CallAction action);
    Problem apply(const ClockStepAction& action);
    Problem apply(const EditAction& action);
    Problem apply(const StorageAction& action);
    Problem apply(CurrentAction action);
    Problem apply(const ItemsQuery& query);
    Problem apply(const PresenceQuery& query);
    Problem apply(const StateQuery& query);
    Problem apply(const DumpQuery& query);

    Orvane& tracker();
    void seedIdentifiers();

    std::shared_ptr<SimulatedPlatform> platform_;
    std::filesystem::path supportFolder_;
    bool start_;
    TraceOutput output_;
    LocalTimeZone timeZone_;
    bool hasTracker_ = false;
};

}  // namespace orvane::host
