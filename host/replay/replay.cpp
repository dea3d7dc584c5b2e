#include "host/replay/replay.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>

#include "host/replay/replay_session.h"
#include "host/replay/trace_reader.h"

namespace orvane::host {

namespace {

/// The simulated user's folder for the run: the one given, or a temporary one that goes with this object.
class SupportFolder {
  public:
    explicit SupportFolder(const std::optional<std::filesystem::path>& given) {
        if (given) {
            path_ = *given;
            return;
        }
        std::error_code ignored;
        std::string pattern = std::filesystem::temp_directory_path(ignored) / "orvane-replay-XXXXXX";
        if (mkdtemp(pattern.data())) {
            path_ = pattern;
            temporary_ = true;
        }
    }
    ~SupportFolder() {
        std::error_code ignored;
        if (temporary_) std::filesystem::remove_all(path_, ignored);
    }
    SupportFolder(const SupportFolder&) = delete;
    SupportFolder& operator=(const SupportFolder&) = delete;

    /// Empty when no folder could be made.
    const std::filesystem::path& path() const { return path_; }
    bool isTemporary() const { return temporary_; }

  private:
    std::filesystem::path path_;
    bool temporary_ = false;
};

int tell(std::ostream& output, std::ostream& errors, const TraceFailure& failure) {
    output.flush();
    errors << "orvane replay: line " << failure.line << ": " << failure.problem << '\n';
    return replayInvalid;
}

}  // namespace

int runReplay(std::istream& trace, std::ostream& output, std::ostream& errors, const ReplayOptions& options) {
    TraceReader reader(trace);
    const auto first = reader.header();
    if (const auto* failure = std::get_if<TraceFailure>(&first)) return tell(output, errors, *failure);

    const SupportFolder folder(options.supportFolder);
    if (folder.path().empty()) {
        errors << "orvane replay: no temporary folder can be made: " << std::strerror(errno) << '\n';
        return replayFailed;
    }
    ReplaySession session(std::get<TraceHeader>(first), output, folder.path(), options.resourceFolder);
    if (folder.isTemporary()) session.keepStoreInMemory();
    session.begin();
    while (true) {
        const auto next = reader.next();
        if (std::holds_alternative<TraceEnd>(next)) break;
        if (const auto* failure = std::get_if<TraceFailure>(&next)) return tell(output, errors, *failure);
        const TraceLine& line = std::get<TraceLine>(next);
        if (!session.hasTracker() && !worksWithoutTracker(line.action))
            return tell(output, errors, {reader.lineNumber(), "there is no tracker yet"});
        if (const auto problem = session.run(line))
            return tell(output, errors, {reader.lineNumber(), *problem});
    }
    output.flush();
    if (!output) {
        errors << "orvane replay: the output cannot be written\n";
        return replayFailed;
    }
    return replayCompleted;
}

int runReplayFile(const std::string& trace, const ReplayOptions& options) {
    if (trace == "-") return runReplay(std::cin, std::cout, std::cerr, options);
    std::ifstream file(trace, std::ios::binary);
    if (!file) {
        std::cerr << "orvane replay: " << trace << " cannot be read: " << std::strerror(errno) << '\n';
        return replayInvalid;
    }
    return runReplay(file, std::cout, std::cerr, options);
}

}  // namespace orvane::host
