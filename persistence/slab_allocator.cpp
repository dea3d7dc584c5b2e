#include <sys/mman.h>

#include <bit>
#include <new>

#include "persistence/object_table.h"

namespace orvane {

namespace {

constexpr std::size_t slabBytes =
    256 * 1024;  // aligned to its own size, so that a cell's address tells its slab

void* mapAligned() {
    const std::size_t room = slabBytes * 2;
    void* mapped = mmap(nullptr, room, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) throw std::bad_alloc();
    const auto begin = reinterpret_cast<std::uintptr_t>(mapped);
    const std::size_t before = ((begin + slabBytes - 1) & ~(slabBytes - 1)) - begin;
    const std::size_t after = room - before - slabBytes;
    char* const slab = static_cast<char*>(mapped) + before;
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
    bool hasRoom = true;
};

SlabAllocator::SlabAllocator(std::size_t size, std::size_t alignment)
    : cellSize_((size + alignment - 1) / alignment * alignment),
      firstCell_((sizeof(Slab) + alignment - 1) / alignment * alignment),
      cellsPerSlab_((slabBytes - firstCell_) / cellSize_) {}

SlabAllocator::~SlabAllocator() {
    if (spare_) munmap(spare_, slabBytes);
}

SlabAllocator::Slab* SlabAllocator::newSlab() {
    Slab* slab = spare_ ? std::exchange(spare_, nullptr) : new (mapAligned()) Slab;
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
    if (!slab->freeCells && slab->neverUsed == cellsPerSlab_) {
        slabsWithRoom_ = slab->next;
        if (slabsWithRoom_) slabsWithRoom_->previous = nullptr;
        slab->hasRoom = false;
    }
    return cell;
}

void SlabAllocator::release(void* memory) noexcept {
    const std::size_t offset = reinterpret_cast<std::uintptr_t>(memory) & (slabBytes - 1);
    auto* slab = reinterpret_cast<Slab*>(static_cast<char*>(memory) - offset);
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
    if (slab->live > 0) return;
    if (slab->previous)
        slab->previous->next = slab->next;
    else
        slabsWithRoom_ = slab->next;
    if (slab->next) slab->next->previous = slab->previous;
    if (spare_) {
        munmap(slab, slabBytes);
    } else {
        // One empty slab is kept, so that a single object that comes and goes maps nothing.
        new (slab) Slab;
        spare_ = slab;
    }
}

}  // namespace orvane
