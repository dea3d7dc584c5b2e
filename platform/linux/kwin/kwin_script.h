#pragma once

#include <functional>
#include <memory>
#include <string>

#include "foundation/internal.h"
#include "platform/linux/main_loop_timer.h"
#include "platform/linux/session/bus_connection.h"

namespace orvane {

/// Our script inside a running KWin, which reports its windows over the bus. KWin keeps it until this object
/// goes or KWin ends; what a crash leaves behind removes itself when it next has something to report. Each
/// connection has a script of its own, so programs do not take it from one another. Main thread only.
class KWinScript {
  public:
    /// The connection must outlive this object. A script that runs under the same name is replaced.
    explicit KWinScript(BusConnection& bus);
    /// Waits a moment for KWin to remove the script.
    ~KWinScript();
    KWinScript(const KWinScript&) = delete;
    KWinScript& operator=(const KWinScript&) = delete;

    /// What KWin calls a script that was loaded over that connection.
    static std::string nameFor(const BusConnection& bus);

    // Set by the owner, whom both may make destroy this object. Called on the main loop.

    std::function<void(const std::string& report)> onReport;
    /// No report has come: KWin does not take the script, or it does not run.
    std::function<void()> onFailed;

    void load();

  private:
    bool writeFile();
    void removeFile();
    void run(int script);
    void fail();

    BusConnection& bus_;
    const std::string name_;
    const std::string file_;
    /// Gone when this object is; for replies that come later.
    std::shared_ptr<bool> life_ = std::make_shared<bool>(true);
    BusToken object_;
    MainLoopTimer firstReportTimer_;
};

}  // namespace orvane
