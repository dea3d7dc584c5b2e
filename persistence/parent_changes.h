#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <vector>

#include "foundation/internal.h"
#include "foundation/value.h"

namespace orvane {

/// One object's stored values as plain data: attributes as they are, to-one relationships as the other row's
/// key (an integer; absent for none), to-many ones absent.
struct RowSnapshot {
    std::vector<Value> values;
    std::uint64_t changed = 0;  ///< bit i: the i-th property was changed
    bool inserted = false;
    bool deleted = false;
};

/// Unsaved changes of one entity, by key: new objects in the order of their insertion, since temporary keys
/// count downwards.
using EntityChanges = std::map<std::int64_t, RowSnapshot, std::greater<>>;

/// What a parent context shares with its children on other threads. Everything is guarded by the mutex.
///
/// The parent commits and publishes in one hold of it, and a child takes its read lock on the file while it
/// holds it: so a child finds each change either among the unsaved ones or in the file.
class ParentChanges {
  public:
    explicit ParentChanges(std::size_t entities) : unsaved(entities), permanentKeys(entities) {}

    std::mutex mutex;
    std::vector<EntityChanges> unsaved;             ///< by entity index
    std::vector<std::vector<EntityChanges>> inbox;  ///< one element a child's save, for the parent to take in
    /// Temporary keys that became permanent while there were children, by entity index; forgotten at the
    /// first save after the last child.
    std::vector<std::unordered_map<std::int64_t, std::int64_t>> permanentKeys;

    /// A child's fetch in progress: while there is one, the keys of saved rows are noted.
    class Reader {
      public:
        explicit Reader(ParentChanges& changes) : changes_(changes) {
            const std::lock_guard lock(changes_.mutex);
            ++changes_.readers_;
            start_ = changes_.saved_.size();
        }
        ~Reader() {
            const std::lock_guard lock(changes_.mutex);
            if (--changes_.readers_ == 0) changes_.saved_.clear();
        }
        Reader(const Reader&) = delete;
        Reader& operator=(const Reader&) = delete;

      private:
        friend class ParentChanges;
        ParentChanges& changes_;
        std::size_t start_ = 0;
    };

    /// With the mutex held: notes a row that the parent wrote.
    void noteSaved(std::size_t entityIndex, std::int64_t key) {
        if (readers_ > 0) saved_.emplace_back(entityIndex, key);
    }
    /// With the mutex held: the rows of the entity that were written since the reader began.
    std::vector<std::int64_t> savedSince(const Reader& reader, std::size_t entityIndex) const {
        std::vector<std::int64_t> result;
        for (std::size_t i = reader.start_; i < saved_.size(); ++i)
            if (saved_[i].first == entityIndex) result.push_back(saved_[i].second);
        return result;
    }

  private:
    std::size_t readers_ = 0;
    std::vector<std::pair<std::size_t, std::int64_t>> saved_;
};

}  // namespace orvane
