#include <sys/mman.h>

#include <cstdlib>
#include <functional>
#include <new>

#include "persistence/object_table.h"

namespace orvane {

namespace {

constexpr std::size_t slabBytes =
    256 * 1024;                         // aligned to its own size, so that a cell's address tells its slab
constexpr std::size_t firstCells = 32;  // a small slab to begin with: often just a few objects are at hand

void* map(void* wanted, std::size_t bytes, int flags) {
    void* const mapped =
        mmap(wanted, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | flags, -1, 0);
    return mapped == MAP_FAILED ? nullptr : mapped;
}

/// Aligned room for one slab. Beneath the slab made last there is often just that, and whoever needs a second
/// slab will soon fill it: its pages come all at once, which costs less than one by one.
void* mapAligned(void* last) {
    if (last) {
        void* const beneath = map(static_cast<char*>(last) - slabBytes, slabBytes, MAP_POPULATE);
        if (beneath && reinterpret_cast<std::uintptr_t>(beneath) % slabBytes == 0) return beneath;
        if (beneath) munmap(beneath, slabBytes);
    }
    const std::size_t room = slabBytes * 2;
    auto* const mapped = static_cast<char*>(map(nullptr, room, 0));
    if (!mapped) throw std::bad_alloc();
    const std::uintptr_t begin = reinterpret_cast<std::uintptr_t>(mapped);
    const std::size_t before = ((begin + slabBytes - 1) & ~(slabBytes - 1)) - begin;
    const std::size_t after = room - before - slabBytes;
    char* const slab = mapped + before;
    if (before > 0) munmap(mapped, before);
    if (after > 0) munmap(slab + slabBytes, after);
    return slab;
}

}  // namespace

struct SlabAllocator::Slab {
    Slab* previous = nullptr;
    Slab* next = nullptr;
    void* freeCells = nullptr;  // cells given back, chained through their first word
    std::size_t neverUsed = 0;  // index of the first cell that was never handed out
    std::size_t live = 0;
    std::size_t cells = 0;
    bool hasRoom = true;
};

SlabAllocator::SlabAllocator(std::size_t size, std::size_t alignment)
    : cellSize_((size + alignment - 1) / alignment * alignment),
      firstCell_((sizeof(Slab) + alignment - 1) / alignment * alignment) {}

SlabAllocator::~SlabAllocator() {
    if (spare_) munmap(spare_, slabBytes);
    std::free(first_);
}

bool SlabAllocator::isInFirst(const void* cell) const {
    const auto* const begin = reinterpret_cast<const char*>(first_);
    return first_ && std::less_equal<>()(begin, static_cast<const char*>(cell)) &&
           std::less<>()(static_cast<const char*>(cell), begin + firstCell_ + cellSize_ * firstCells);
}

SlabAllocator::Slab* SlabAllocator::newSlab() {
    Slab* slab = std::exchange(spare_, nullptr);
    if (!slab && !first_) {
        void* const room = std::malloc(firstCell_ + cellSize_ * firstCells);
        if (!room) throw std::bad_alloc();
        slab = first_ = new (room) Slab;
    } else if (!slab) {
        slab = lastMapped_ = new (mapAligned(lastMapped_)) Slab;
    }
    slab->cells = slab == first_ ? firstCells : (slabBytes - firstCell_) / cellSize_;
    slab->hasRoom = true;
    slab->previous = nullptr;
    slab->next = slabsWithRoom_;
    if (slabsWithRoom_) slabsWithRoom_->previous = slab;
    slabsWithRoom_ = slab;
    return slab;
}

void* SlabAllocator::allocate() {
    Slab* slab = slabsWithRoom_ ? slabsWithRoom_ : newSlab();
    void* cell = slab->freeCells;
    if (cell)
        slab->freeCells = *static_cast<void**>(cell);
    else
        cell = reinterpret_cast<char*>(slab) + firstCell_ + cellSize_ * slab->neverUsed++;
    ++slab->live;
    if (!slab->freeCells && slab->neverUsed == slab->cells) {
        slabsWithRoom_ = slab->next;
        if (slabsWithRoom_) slabsWithRoom_->previous = nullptr;
        slab->hasRoom = false;
    }
    return cell;
}

void SlabAllocator::release(void* memory) noexcept {
    const std::size_t offset = reinterpret_cast<std::uintptr_t>(memory) & (slabBytes - 1);
    Slab* const slab =
        isInFirst(memory) ? first_ : reinterpret_cast<Slab*>(static_cast<char*>(memory) - offset);
    *static_cast<void**>(memory) = slab->freeCells;
    slab->freeCells = memory;
    --slab->live;
    if (!slab->hasRoom) {
        slab->hasRoom = true;
        slab->previous = nullptr;
        slab->next = slabsWithRoom_;
        if (slabsWithRoom_) slabsWithRoom_->previous = slab;
        slabsWithRoom_ = slab;
    }
    if (slab->live > 0 || slab == first_) return;
    if (slab->previous)
        slab->previous->next = slab->next;
    else
        slabsWithRoom_ = slab->next;
    if (slab->next) slab->next->previous = slab->previous;
    if (spare_) {
        munmap(slab, slabBytes);
    } else {
        // One empty slab is kept, so that a single object that comes and goes maps nothing.
        spare_ = new (slab) Slab;
    }
}

}  // namespace orvane
