#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "foundation/export.h"

namespace orvane {

class TextPool;

/// Bytes shared by every object of a context that holds the same ones. The bytes follow the header.
class SharedText {
  public:
    std::string_view view() const { return {reinterpret_cast<const char*>(this + 1), length_}; }

  private:
    friend class TextPool;
    friend class TextSlot;

    TextPool* pool_ = nullptr;
    std::uint32_t references_ = 0;
    std::uint32_t length_ = 0;
    std::uint64_t hash_ = 0;
};

/// Keeps one copy of each text for as long as anything holds it. Use on one thread.
class ORVANE_EXPORT TextPool {
  public:
    TextPool() = default;
    TextPool(const TextPool&) = delete;
    TextPool& operator=(const TextPool&) = delete;
    ~TextPool();

    /// The shared copy of the bytes, with one more holder.
    SharedText* acquire(std::string_view text);
    void release(SharedText* text);

    std::size_t size() const { return size_; }

  private:
    friend class TextBatch;

    static std::uint64_t hashOf(std::string_view text);
    SharedText* acquire(std::string_view text, std::uint64_t hash);
    void resize(std::size_t capacity);
    void forgetPlaces();
    std::size_t findPlace(std::uint64_t hash, std::string_view text) const;

    SharedText** places_ = nullptr;  // open addressing; a power of two of them
    std::size_t capacity_ = 0;
    std::size_t size_ = 0;
};

}  // namespace orvane
