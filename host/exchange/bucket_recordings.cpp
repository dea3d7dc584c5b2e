#include "host/exchange/bucket_recordings.h"

#include <algorithm>
#include <map>
#include <string>

namespace orvane::host {

namespace {

struct Span {
    std::int64_t start;
    std::int64_t end;
};

/// When the user was away, in order and apart from one another.
std::vector<Span> awaySpans(std::vector<BucketEvent>& events) {
    std::erase_if(events, [](const BucketEvent& event) {
        return event.presence != BucketEvent::Presence::away || event.end <= event.start;
    });
    std::sort(events.begin(), events.end(),
              [](const BucketEvent& left, const BucketEvent& right) { return left.start < right.start; });
    std::vector<Span> result;
    for (const BucketEvent& event : events) {
        if (!result.empty() && event.start <= result.back().end)
            result.back().end = std::max(result.back().end, event.end);
        else
            result.push_back({event.start, event.end});
    }
    return result;
}

/// Gathers parts in the order of their starts.
class RecordingMaker {
  public:
    RecordingMaker(ImportBatch& batch, ImportReport& report) : batch_(batch), report_(report) {}
    ~RecordingMaker() { flush(); }
    RecordingMaker(const RecordingMaker&) = delete;
    RecordingMaker& operator=(const RecordingMaker&) = delete;

    void beginEvent() { countsMerge_ = true; }
    void add(const BucketEvent& event, std::int64_t start, std::int64_t end, bool idle) {
        if (hasPending_ && pending_.application == event.application && pending_.window == event.window &&
            pendingIdle_ == idle && pending_.end == start) {
            pending_.end = end;
            if (countsMerge_) ++report_.merged;
            countsMerge_ = false;
            return;
        }
        flush();
        countsMerge_ = false;
        pending_ = event;
        pending_.start = start;
        pending_.end = end;
        pendingIdle_ = idle;
        hasPending_ = true;
    }

  private:
    static double seconds(std::int64_t microseconds) { return static_cast<double>(microseconds) / 1e6; }
    void flush() {
        if (!hasPending_) return;
        batch_.add({seconds(pending_.start), seconds(pending_.end), pending_.window, pending_.application,
                    pendingIdle_});
        hasPending_ = false;
    }

    ImportBatch& batch_;
    ImportReport& report_;
    BucketEvent pending_;
    bool pendingIdle_ = false;
    bool hasPending_ = false;
    bool countsMerge_ = false;
};

/// A window event and the presence that goes with it.
struct WindowEvent {
    BucketEvent event;
    const std::vector<Span>* away;
};

void addEvent(const WindowEvent& windowEvent, std::int64_t from, RecordingMaker& maker) {
    const BucketEvent& event = windowEvent.event;
    const std::vector<Span>& away = *windowEvent.away;
    maker.beginEvent();
    auto span =
        std::lower_bound(away.begin(), away.end(), from,
                         [](const Span& earlier, std::int64_t moment) { return earlier.end <= moment; });
    for (; span != away.end() && span->start < event.end; ++span) {
        if (from < span->start) maker.add(event, from, span->start, false);
        from = std::max(from, span->start);
        const std::int64_t end = std::min(event.end, span->end);
        maker.add(event, from, end, true);
        from = end;
    }
    if (from < event.end) maker.add(event, from, event.end, false);
}

}  // namespace

void addRecordings(std::vector<Bucket> buckets, ImportBatch& batch, ImportReport& report) {
    std::map<std::string, std::vector<BucketEvent>> presence;
    std::size_t windowCount = 0;
    for (Bucket& bucket : buckets) {
        if (bucket.type == windowBucketType) windowCount += bucket.events.size();
        if (bucket.type != presenceBucketType) continue;
        auto& events = presence[bucket.host];
        events.insert(events.end(), bucket.events.begin(), bucket.events.end());
    }
    std::map<std::string, std::vector<Span>> away;
    for (auto& [host, events] : presence) away[host] = awaySpans(events);

    std::vector<WindowEvent> events;
    events.reserve(windowCount);
    for (Bucket& bucket : buckets) {
        if (bucket.type != windowBucketType) continue;
        for (const BucketEvent& event : bucket.events) {
            if (event.end == event.start)
                ++report.zeroDuration;
            else if (event.end < event.start)
                ++report.negativeDuration;
            else
                events.push_back({event, &away[bucket.host]});
        }
        bucket.events = {};
    }
    std::stable_sort(events.begin(), events.end(), [](const WindowEvent& left, const WindowEvent& right) {
        return left.event.start < right.event.start;
    });

    RecordingMaker maker(batch, report);
    std::int64_t covered = events.empty() ? 0 : events.front().event.start;
    for (const WindowEvent& event : events) {
        if (event.event.end <= covered) {
            ++report.coveredWithin;
            continue;
        }
        // All events so far began no later than this one, so what they cover from here on has no gaps.
        addEvent(event, std::max(event.event.start, covered), maker);
        covered = event.event.end;
    }
}

}  // namespace orvane::host
