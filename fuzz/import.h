#pragma once

#include <optional>
#include <string_view>

#include "fuzz/common.h"
#include "host/exchange/import_batch.h"
#include "host/exchange/import_report.h"
#include "host/exchange/input_file.h"
#include "host/exchange/progress.h"
#include "host/exchange/store_importer.h"

namespace orvane::fuzz {

/// Reads the text and, when that succeeds, puts what it holds into a new store, twice.
template <class Read>
void importInput(std::string_view text, const Read& read) {
    const MemoryFile file(text);
    host::Progress progress;
    host::ImportBatch batch;
    host::ImportReport report;
    host::InputFile input(file.path(), progress);
    try {
        read(input, batch, report);
    } catch (const host::InputProblem&) {
        return;
    }
    MemoryStore store;
    Error error;
    demand(host::StoreImporter(store.context(), batch, report, progress).run(&error),
           "what was read can be put into a store");
    store.context().reset();
    host::ImportReport again;
    demand(host::StoreImporter(store.context(), batch, again, progress).run(&error),
           "what is stored can be read");
    demand(again.taken == 0 && again.newApplications == 0 && again.newGroups == 0,
           "what is stored is not taken again");
}

}  // namespace orvane::fuzz
