#pragma once

#include <filesystem>
#include <memory>
#include <set>

#include "bench/recording_stream.h"
#include "persistence/model.h"

namespace orvane::bench {

/// Store files full of made-up recordings, made once and kept in a work folder. What goes wrong throws
/// std::runtime_error.
class StoreFiles {
  public:
    /// Files that are there already are used, unless `fresh`.
    StoreFiles(std::filesystem::path folder, std::shared_ptr<const ManagedObjectModel> model, bool fresh);

    /// A folder that holds such a store under the library's own file name. Not to be written to.
    std::filesystem::path folderWith(std::uint64_t recordings);
    std::filesystem::path fileWith(std::uint64_t recordings);

    const std::filesystem::path& workFolder() const { return folder_; }
    const std::shared_ptr<const ManagedObjectModel>& model() const { return model_; }

  private:
    std::filesystem::path folder_;
    std::shared_ptr<const ManagedObjectModel> model_;
    bool fresh_;
    std::set<std::filesystem::path> made_;  // by this run
};

/// A copy of a store file in a folder of its own, both removed at the end.
class ScratchCopy {
  public:
    ScratchCopy(const std::filesystem::path& file, const std::filesystem::path& parent);
    ~ScratchCopy();
    ScratchCopy(const ScratchCopy&) = delete;
    ScratchCopy& operator=(const ScratchCopy&) = delete;

    const std::filesystem::path& folder() const { return folder_; }
    const std::filesystem::path& file() const { return file_; }

  private:
    std::filesystem::path folder_;
    std::filesystem::path file_;
};

}  // namespace orvane::bench
