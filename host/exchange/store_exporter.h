#pragma once

#include <cstddef>
#include <optional>
#include <unordered_map>
#include <vector>

#include "foundation/error.h"
#include "host/date_range.h"
#include "host/exchange/exchange_writer.h"
#include "host/exchange/progress.h"
#include "persistence/managed_object_context.h"
#include "store/orvane_app.h"
#include "store/orvane_group.h"
#include "store/orvane_recording.h"

namespace orvane::host {

/// Hands what a store holds to a writer. Recordings come in the order of their starts and are read one by
/// one.
class StoreExporter {
  public:
    /// All three must outlive the exporter.
    StoreExporter(ManagedObjectContext& context, ExchangeWriter& writer, Progress& progress)
        : context_(context), writer_(writer), progress_(progress) {}

    /// Everything; or, with a range, the recordings that lie in it or reach into it, uncut, with their
    /// applications and groups. False, with an error, when the store cannot be read; stops, and is true, when
    /// it is interrupted.
    bool run(const std::optional<DateRange>& range, Error* error);

    std::size_t groupCount() const { return groups_.size(); }
    std::size_t applicationCount() const { return applications_.size(); }
    std::size_t recordingCount() const { return recordings_; }

  private:
    bool writeAllItems(Error* error);
    std::size_t indexOf(const OrvaneGroup& group);
    std::size_t indexOf(const OrvaneApp& application);
    void write(const OrvaneRecording& recording);

    ManagedObjectContext& context_;
    ExchangeWriter& writer_;
    Progress& progress_;
    // Kept alive, so that each is read once.
    std::vector<Ref<ManagedObject>> held_;
    std::unordered_map<const ManagedObject*, std::size_t> groups_;
    std::unordered_map<const ManagedObject*, std::size_t> applications_;
    std::size_t recordings_ = 0;
};

}  // namespace orvane::host
