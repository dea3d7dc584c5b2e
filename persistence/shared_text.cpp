#include "persistence/shared_text.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace orvane {

namespace {

constexpr std::size_t smallestCapacity = 64;

}  // namespace

TextPool::~TextPool() { std::free(places_); }

// Mixes eight bytes at a time; the texts come from this user's own desktop, so speed counts and nothing
// else.
std::uint64_t TextPool::hashOf(std::string_view text) {
    constexpr std::uint64_t multiplier = 0x9E3779B97F4A7C15ULL;
    std::uint64_t hash = text.size() * multiplier;
    const char* bytes = text.data();
    std::size_t left = text.size();
    while (left >= 8) {
        std::uint64_t word;
        std::memcpy(&word, bytes, 8);
        hash = (hash ^ word) * multiplier;
        hash ^= hash >> 32;
        bytes += 8;
        left -= 8;
    }
    std::uint64_t word = 0;
    if (left > 0) std::memcpy(&word, bytes, left);
    hash = (hash ^ word) * multiplier;
    return hash ^ (hash >> 29);
}

std::size_t TextPool::findPlace(std::uint64_t hash, std::string_view text) const {
    std::size_t place = hash & (capacity_ - 1);
    while (const SharedText* present = places_[place]) {
        if (present->hash_ == hash && present->view() == text) return place;
        place = (place + 1) & (capacity_ - 1);
    }
    return place;
}

void TextPool::resize(std::size_t capacity) {
    SharedText** const old = places_;
    const std::size_t oldCapacity = capacity_;
    // Zeroed pages come from the system as they are touched.
    auto* const fresh = static_cast<SharedText**>(std::calloc(capacity, sizeof(void*)));
    if (!fresh) throw std::bad_alloc();
    places_ = fresh;
    capacity_ = capacity;
    for (std::size_t i = 0; i < oldCapacity; ++i) {
        if (!old[i]) continue;
        std::size_t place = old[i]->hash_ & (capacity_ - 1);
        while (places_[place]) place = (place + 1) & (capacity_ - 1);
        places_[place] = old[i];
    }
    std::free(old);
}

SharedText* TextPool::acquire(std::string_view text) { return acquire(text, hashOf(text)); }

SharedText* TextPool::acquire(std::string_view text, std::uint64_t hash) {
    if (size_ * 2 >= capacity_) resize(capacity_ == 0 ? smallestCapacity : capacity_ * 2);
    const std::size_t place = findPlace(hash, text);
    SharedText*& present = places_[place];
    if (!present) {
        void* memory = std::malloc(sizeof(SharedText) + text.size());
        if (!memory) throw std::bad_alloc();
        present = new (memory) SharedText;
        present->pool_ = this;
        present->length_ = static_cast<std::uint32_t>(text.size());
        present->hash_ = hash;
        if (!text.empty()) std::memcpy(present + 1, text.data(), text.size());
        ++size_;
    }
    ++present->references_;
    return present;
}

void TextPool::release(SharedText* text) {
    std::size_t place = text->hash_ & (capacity_ - 1);
    while (places_[place] != text) place = (place + 1) & (capacity_ - 1);
    // Close the gap: move back what was pushed past this place, so that searches need no tombstones.
    std::size_t next = place;
    for (;;) {
        places_[place] = nullptr;
        for (;;) {
            next = (next + 1) & (capacity_ - 1);
            if (!places_[next]) {
                std::free(text);
                if (--size_ == 0) forgetPlaces();
                return;
            }
            const std::size_t home = places_[next]->hash_ & (capacity_ - 1);
            const bool homeLiesBetween =
                place <= next ? (place < home && home <= next) : (place < home || home <= next);
            if (!homeLiesBetween) break;
        }
        places_[place] = places_[next];
        place = next;
    }
}

void TextPool::forgetPlaces() {
    std::free(std::exchange(places_, nullptr));
    capacity_ = 0;
}

}  // namespace orvane
