#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/date.h"
#include "foundation/error.h"
#include "persistence/managed_object_context.h"
#include "store/orvane_app.h"
#include "store/orvane_recording.h"

namespace orvane::host {

/// From a point in time up to, and without, another.
struct ForgottenTime {
    Date from;
    Date until;
};

struct ForgetReport {
    std::size_t recordings = 0;  ///< deleted as a whole
    std::size_t cut = 0;         ///< of these, what lies outside the time stays
    DecimalSeconds duration{0};  ///< of what goes, idle or not
    std::vector<std::string> removedApplications;
    std::vector<std::string>
        keptApplications;  ///< nothing of them is left, but the user made settings for them
};

/// Deletes recordings: those of a time, of some applications, or of both.
///
/// A recording that reaches beyond the time is deleted too, and what lies outside comes back as new ones: a
/// tracker that still writes to it then finds it gone, and cannot bring back what was forgotten. Applications
/// of which nothing is left go as well, unless they are in a group or switched off.
class Forgetting {
  public:
    /// Everything, when neither is given.
    Forgetting(ManagedObjectContext& context, std::optional<ForgottenTime> time,
               std::optional<std::vector<Ref<OrvaneApp>>> applications)
        : context_(context), time_(time), applications_(std::move(applications)) {}

    /// Looks for what is to go. None, with an error, when the store cannot be read.
    std::optional<ForgetReport> find(Error* error);
    /// Deletes what was found; the caller saves.
    void apply(ForgetReport& report);

  private:
    struct Span {
        std::optional<Date> start;
        std::optional<Date> end;
    };
    enum class Part { none, whole, cut };

    Part forgottenPart(const Span& span) const;
    void keepRest(OrvaneRecording& recording);
    void removeEmptyApplications(ForgetReport& report);

    ManagedObjectContext& context_;
    std::optional<ForgottenTime> time_;
    std::optional<std::vector<Ref<OrvaneApp>>> applications_;
    std::vector<Ref<OrvaneRecording>> recordings_;
};

}  // namespace orvane::host
