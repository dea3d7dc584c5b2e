#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "platform/platform.h"
#include "tracker/orvane.h"

namespace orvane::host {

/// The running desktop with user defaults that hold nothing: commands that only read the store use it, so
/// that asking for the tracker never starts it.
std::shared_ptr<Platform> makeReadingPlatform();

/// The store as commands see it that do not track. None, after a message, when it cannot be opened.
class OpenStore {
  public:
    /// Installs the reading platform and opens the store in `folder`, or in the usual one.
    explicit OpenStore(const std::optional<std::filesystem::path>& folder);
    ~OpenStore();
    OpenStore(const OpenStore&) = delete;
    OpenStore& operator=(const OpenStore&) = delete;

    /// Whether there is a database at all; nothing is created by looking.
    bool exists() const { return exists_; }
    /// None when the database exists but cannot be opened; the reason was printed.
    ManagedObjectContext* context();
    /// The same, but makes a database where there is none.
    ManagedObjectContext* contextForWriting() { return tracker_.managedObjectContext(); }
    /// exitFailure, after a message, when something of the store could not be read since it was opened: what
    /// was found is a part then. Otherwise exitSuccess.
    int readStatus() const;
    Orvane& tracker() { return tracker_; }

  private:
    Orvane& tracker_;
    bool exists_;
};

}  // namespace orvane::host
