#pragma once

#include <array>
#include <string>

#include "foundation/internal.h"
#include "persistence/row_slots.h"

namespace orvane {

/// Looks up texts for many slots together, so that the waits for memory overlap: a pool of many texts does
/// not fit the processor's caches. A slot is filled at the latest when `settle` runs or the batch ends; until
/// then it must stay where it is, and nobody may read it.
class TextBatch {
  public:
    explicit TextBatch(TextPool& pool) : pool_(pool) {}
    ~TextBatch() { settle(); }
    TextBatch(const TextBatch&) = delete;
    TextBatch& operator=(const TextBatch&) = delete;

    /// The bytes are copied.
    void add(TextSlot& slot, std::string_view text);
    void settle();

  private:
    static constexpr std::size_t mostWaiting = 32;

    struct Waiting {
        TextSlot* slot;
        std::uint64_t hash;
        std::size_t offset;
        std::size_t length;
    };

    TextPool& pool_;
    std::array<Waiting, mostWaiting> waiting_;
    std::size_t count_ = 0;
    std::string bytes_;
};

}  // namespace orvane
