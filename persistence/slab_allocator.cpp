#include <sys/mman.h>

#include <cstdlib>
#include <functional>
#include <new>

#include "persistence/object_table.h"

namespace orvane {

namespace {

// An application's first objects get a small slab from the heap.
constexpr std::size_t firstCells = 32;

char* map(void* wanted, std::size_t bytes) {
    void* const mapped = mmap(wanted, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return mapped == MAP_FAILED ? nullptr : static_cast<char*>(mapped);
}

/// Memory at a multiple of `alignment`, if possible directly beneath `last`.
char* mapAligned(std::size_t bytes, std::size_t alignment, void* last) {
    if (last) {
        char* const beneath = map(static_cast<char*>(last) - alignment, bytes);
        if (beneath && reinterpret_cast<std::uintptr_t>(beneath) % alignment == 0) return beneath;
        if (beneath) munmap(beneath, bytes);
    }
    char* const mapped = map(nullptr, alignment + bytes);
    if (!mapped) throw std::bad_alloc();
    const std::uintptr_t begin = reinterpret_cast<std::uintptr_t>(mapped);
    const std::size_t before = ((begin + alignment - 1) & ~(alignment - 1)) - begin;
    char* const slab = mapped + before;
    if (before > 0) munmap(mapped, before);
    if (before < alignment) munmap(slab + bytes, alignment - before);
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
    std::size_t mappedBytes = 0;  // 0 in the first one
    bool hasRoom = true;
};

SlabAllocator::SlabAllocator(std::size_t size, std::size_t alignment, std::size_t largest)
    : largest_(largest),
      cellSize_((size + alignment - 1) / alignment * alignment),
      firstCell_((sizeof(Slab) + alignment - 1) / alignment * alignment) {}

SlabAllocator::~SlabAllocator() {
    if (spare_) unmap(spare_);
    std::free(first_);
}

bool SlabAllocator::isInFirst(const void* cell) const {
    const auto* const begin = reinterpret_cast<const char*>(first_);
    return first_ && std::less_equal<>()(begin, static_cast<const char*>(cell)) &&
           std::less<>()(static_cast<const char*>(cell), begin + firstCell_ + cellSize_ * firstCells);
}

SlabAllocator::Slab* SlabAllocator::mapSlab() {
    const std::size_t bytes = mappedSlabs_ == 0 ? mediumSlab : largest_;
    char* const memory = mapAligned(bytes, largest_, lastMapped_);
    // Whoever needs a second one is about to read a store's recordings. All its pages come at once, which
    // costs less than one by one. Both are advice: without huge pages, or this way of populating, they come
    // as they can.
    if (bytes == hugeSlab) madvise(memory, bytes, MADV_HUGEPAGE);
    if (mappedSlabs_ > 0) madvise(memory, bytes, MADV_POPULATE_WRITE);
    ++mappedSlabs_;
    Slab* const slab = lastMapped_ = new (memory) Slab;
    slab->mappedBytes = bytes;
    return slab;
}

void SlabAllocator::unmap(Slab* slab) noexcept {
    munmap(slab, slab->mappedBytes);
    --mappedSlabs_;
}

SlabAllocator::Slab* SlabAllocator::newSlab() {
    Slab* slab = std::exchange(spare_, nullptr);
    if (!slab && !first_) {
        void* const room = std::malloc(firstCell_ + cellSize_ * firstCells);
        if (!room) throw std::bad_alloc();
        slab = first_ = new (room) Slab;
    } else if (!slab) {
        slab = mapSlab();
    }
    slab->cells = slab == first_ ? firstCells : (slab->mappedBytes - firstCell_) / cellSize_;
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
    const std::size_t offset = reinterpret_cast<std::uintptr_t>(memory) & (largest_ - 1);
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
    // One empty slab is kept, so that a single object that comes and goes maps nothing; a small one rather
    // than a large one.
    if (spare_ && spare_->mappedBytes <= slab->mappedBytes) return unmap(slab);
    if (spare_) unmap(spare_);
    const std::size_t bytes = slab->mappedBytes;
    spare_ = new (slab) Slab;
    spare_->mappedBytes = bytes;
}

}  // namespace orvane
