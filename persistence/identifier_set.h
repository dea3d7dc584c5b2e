#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "foundation/internal.h"

namespace orvane {

/// Keys of the members of a to-many relationship, in the order of joining.
class IdentifierSet {
  public:
    void reserve(std::size_t count) {
        keys_.reserve(count);
        places_.reserve(count);
    }
    bool contains(std::int64_t key) const { return places_.contains(key); }
    void add(std::int64_t key) {
        if (places_.try_emplace(key, keys_.size()).second) keys_.push_back(key);
    }
    void remove(std::int64_t key) {
        const auto place = places_.find(key);
        if (place == places_.end()) return;
        keys_[place->second] = vacant;
        places_.erase(place);
        if (keys_.size() > 16 && places_.size() < keys_.size() / 2) compact();
    }
    /// A temporary key became permanent.
    void replace(std::int64_t oldKey, std::int64_t newKey) {
        const auto place = places_.find(oldKey);
        if (place == places_.end()) return;
        const std::size_t index = place->second;
        places_.erase(place);
        places_.emplace(newKey, index);
        keys_[index] = newKey;
    }
    std::vector<std::int64_t> keys() const {
        std::vector<std::int64_t> result;
        result.reserve(places_.size());
        for (const std::int64_t key : keys_)
            if (key != vacant) result.push_back(key);
        return result;
    }

  private:
    static constexpr std::int64_t vacant = 0;  // no row and no temporary object has the key 0

    void compact() {
        std::vector<std::int64_t> kept = keys();
        keys_.clear();
        places_.clear();
        for (const std::int64_t key : kept) add(key);
    }

    std::vector<std::int64_t> keys_;
    std::unordered_map<std::int64_t, std::size_t> places_;
};

}  // namespace orvane
