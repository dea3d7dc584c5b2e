#include "host/exchange/stored_recordings.h"

#include <algorithm>
#include <limits>

namespace orvane::host {

namespace {

using Recordings = std::vector<Ref<OrvaneRecording>>;

/// Goes through the store in pieces of time. The store finds recordings quickly by idle state and start, and
/// by the start alone only slowly; so each piece is fetched by idle state and then put in order.
class RecordingWalk {
  public:
    RecordingWalk(ManagedObjectContext& context, const RecordingFilter& filter, std::size_t pieceSize)
        : context_(context), filter_(filter), pieceSize_(pieceSize) {}

    bool run(const RecordingUse& use) {
        const auto total = context_.countForFetchRequest(request(upTo(std::nullopt)), &failure_);
        if (!total) return false;
        if (*total <= pieceSize_) return pass(fetch(upTo(std::nullopt)), *total, use) || !failure_;
        bool goesOn = filter_.lastStart || pass(fetch({"startDate == nil", {}}), *total, use);
        Date from = dateFromSecondsSinceEpoch(-std::numeric_limits<double>::infinity());
        while (goesOn && !failure_) {
            std::optional<Date> end = endOfPiece(from);
            if (end && filter_.lastStart && *end > *filter_.lastStart) end.reset();
            Recordings piece;
            for (const Value& idle : idleStates()) {
                Condition condition = upTo(end);
                condition.format += " AND idle == %@ AND startDate >= %@";
                condition.arguments.insert(condition.arguments.end(), {idle, from});
                const Recordings some = fetch(condition);
                piece.insert(piece.end(), some.begin(), some.end());
            }
            goesOn = pass(std::move(piece), *total, use) && end;
            from = end.value_or(from);
        }
        return !failure_;
    }
    const Error& failure() const { return failure_; }

  private:
    struct Condition {
        std::string format;
        std::vector<Value> arguments;
    };

    static std::vector<Value> idleStates() { return {Value(), Value(false), Value(true)}; }

    /// The one upper bound of the start: with two of them SQLite may go by the wider.
    Condition upTo(std::optional<Date> end) const {
        if (end) return {"startDate < %@", {*end}};
        if (filter_.lastStart) return {"startDate <= %@", {*filter_.lastStart}};
        return {"TRUEPREDICATE", {}};
    }
    FetchRequest request(const Condition& condition) const {
        std::vector<Value> arguments = filter_.arguments;
        arguments.insert(arguments.end(), condition.arguments.begin(), condition.arguments.end());
        return {std::string(OrvaneRecording::entityName()),
                Predicate::withFormat("(" + filter_.format + ") AND " + condition.format, arguments)};
    }
    Recordings fetch(const Condition& condition) {
        return failure_ ? Recordings() : context_.fetch<OrvaneRecording>(request(condition), &failure_);
    }

    bool pass(Recordings piece, std::size_t total, const RecordingUse& use) {
        if (failure_) return false;
        std::sort(piece.begin(), piece.end(),
                  [](const Ref<OrvaneRecording>& left, const Ref<OrvaneRecording>& right) {
                      const auto leftStart = left->startDate();
                      const auto rightStart = right->startDate();
                      return leftStart != rightStart ? leftStart < rightStart
                                                     : left->objectID().key() < right->objectID().key();
                  });
        return std::all_of(piece.begin(), piece.end(),
                           [&](const Ref<OrvaneRecording>& recording) { return use(*recording, total); });
    }

    /// Where the piece that begins there ends, so that it holds few enough of any idle state; none when that
    /// is the end of all.
    std::optional<Date> endOfPiece(Date from) {
        std::optional<Date> result;
        for (const Value& idle : idleStates()) {
            auto end = startAt("idle == %@ AND startDate >= %@", {idle, from}, pieceSize_);
            // More than a piece of them begin in the same moment: they belong together.
            if (end == from) end = startAt("idle == %@ AND startDate > %@", {idle, from}, 0);
            if (end && (!result || *end < *result)) result = end;
        }
        return result;
    }
    /// Start of the recording at that place in the order of starts, filter aside.
    std::optional<Date> startAt(const char* format, const std::vector<Value>& arguments, std::size_t place) {
        FetchRequest request{std::string(OrvaneRecording::entityName()),
                             Predicate::withFormat(format, arguments),
                             {{"startDate"}}};
        request.fetchLimit = 1;
        request.fetchOffset = place;
        const auto found = context_.fetch<OrvaneRecording>(request, &failure_);
        return found.empty() ? std::nullopt : found.front()->startDate();
    }

    ManagedObjectContext& context_;
    const RecordingFilter& filter_;
    std::size_t pieceSize_;
    Error failure_;
};

}  // namespace

bool forEachRecording(ManagedObjectContext& context, const RecordingFilter& filter, Error* error,
                      const RecordingUse& use, std::size_t pieceSize) {
    RecordingWalk walk(context, filter, pieceSize);
    if (walk.run(use)) return true;
    assignError(error, walk.failure());
    return false;
}

}  // namespace orvane::host
