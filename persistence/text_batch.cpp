#include "persistence/text_batch.h"

namespace orvane {

void TextBatch::add(TextSlot& slot, std::string_view text) {
    if (count_ == mostWaiting) settle();
    const std::uint64_t hash = TextPool::hashOf(text);
    if (pool_.places_) __builtin_prefetch(&pool_.places_[hash & (pool_.capacity_ - 1)]);
    waiting_[count_++] = {&slot, hash, bytes_.size(), text.size()};
    bytes_.append(text);
}

void TextBatch::settle() {
    for (std::size_t i = 0; i < count_ && pool_.places_; ++i)
        if (const SharedText* likely = pool_.places_[waiting_[i].hash & (pool_.capacity_ - 1)])
            __builtin_prefetch(likely, 1);
    const std::string_view bytes = bytes_;
    for (std::size_t i = 0; i < count_; ++i) {
        const Waiting& each = waiting_[i];
        SharedText* const text = pool_.acquire(bytes.substr(each.offset, each.length), each.hash);
        each.slot->clear();
        each.slot->text_ = text;
    }
    count_ = 0;
    bytes_.clear();
}

}  // namespace orvane
