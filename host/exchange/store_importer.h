#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "foundation/error.h"
#include "host/exchange/covered_time.h"
#include "host/exchange/import_batch.h"
#include "host/exchange/import_report.h"
#include "host/exchange/item_matching.h"
#include "host/exchange/progress.h"
#include "host/exchange/stored_recordings.h"
#include "persistence/managed_object_context.h"
#include "store/orvane_recording.h"

namespace orvane::host {

/// Puts a batch into a store, in one save. What the store holds already stays as it is and is not put in
/// again: a recording with the same values is left out, and of one whose time is partly covered by stored
/// recordings only the rest is taken.
class StoreImporter {
  public:
    /// All must outlive the importer. The context must have no changes.
    StoreImporter(ManagedObjectContext& context, const ImportBatch& batch, ImportReport& report,
                  Progress& progress);

    /// False, with an error, when the store cannot be read or written, and, without one, when it was
    /// interrupted; the store is then as it was. An interruption during the save itself comes too late.
    bool run(Error* error);

  private:
    bool findItems(Error* error);
    bool findStored(Error* error);
    bool lookAtStored(const RecordingFilter& filter, Error* error);
    void note(const OrvaneRecording& stored);
    void insertItems();
    void insertPart(const ImportBatch::Recording& recording, std::optional<double> start,
                    std::optional<double> end);
    void insertRest(const ImportBatch::Recording& recording);
    bool insertRecordings();

    ManagedObjectContext& context_;
    const ImportBatch& batch_;
    ImportReport& report_;
    Progress& progress_;
    std::vector<Ref<OrvaneGroup>> groups_;      ///< by index in the batch; none for those still to be made
    std::vector<Ref<OrvaneApp>> applications_;  ///< the same
    CoveredTime covered_;
    std::vector<std::uint32_t> byStart_;  ///< indexes of the batch's recordings in the order of their starts
    std::vector<bool> isStored_;          ///< whether the store holds the same recording
};

}  // namespace orvane::host
