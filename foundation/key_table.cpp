#include "foundation/key_table.h"

#include <algorithm>
#include <numeric>

#include "foundation/keyed_object.h"

namespace orvane {

namespace {

/// Most comparisons end at the length.
bool before(std::string_view left, std::string_view right) {
    return left.size() != right.size() ? left.size() < right.size() : left < right;
}

}  // namespace

UnknownKeyError::UnknownKeyError(std::string_view className, std::string_view key)
    : std::invalid_argument(std::string(className) + " has no key \"" + std::string(key) + "\"") {}

WrongValueError::WrongValueError(std::string_view className, std::string_view key, std::string_view expected,
                                 const Value& given)
    : std::invalid_argument(std::string(className) + "." + std::string(key) + ": expected " +
                            std::string(expected) + ", got " + std::string(given.kindName()) +
                            (given.isNone() ? std::string() : " " + given.description())) {}

KeyTable::KeyTable(std::string_view className, const KeyTable* base, std::vector<Key> keys)
    : className_(className) {
    if (base) keys_ = base->keys_;
    for (Key& key : keys) {
        const auto inherited = std::find_if(keys_.begin(), keys_.end(),
                                            [&](const Key& present) { return present.name == key.name; });
        if (inherited == keys_.end()) {
            keys_.push_back(std::move(key));
            continue;
        }
        for (const std::string_view path : inherited->dependsOn)
            if (std::find(key.dependsOn.begin(), key.dependsOn.end(), path) == key.dependsOn.end())
                key.dependsOn.push_back(path);
        *inherited = std::move(key);
    }
    byName_.resize(keys_.size());
    std::iota(byName_.begin(), byName_.end(), std::uint32_t{0});
    std::sort(byName_.begin(), byName_.end(), [&](std::uint32_t left, std::uint32_t right) {
        return before(keys_[left].name, keys_[right].name);
    });
}

const Key* KeyTable::find(std::string_view name) const {
    const auto place = std::lower_bound(
        byName_.begin(), byName_.end(), name,
        [&](std::uint32_t index, std::string_view wanted) { return before(keys_[index].name, wanted); });
    return place != byName_.end() && keys_[*place].name == name ? &keys_[*place] : nullptr;
}

std::span<const std::string_view> KeyTable::keyPathsAffecting(std::string_view name) const {
    const Key* key = find(name);
    return key ? std::span<const std::string_view>(key->dependsOn) : std::span<const std::string_view>();
}

std::vector<std::string_view> KeyTable::keysAffectedBy(std::string_view name) const {
    std::vector<std::string_view> result{name};
    for (std::size_t i = 0; i < result.size(); ++i) {
        for (const Key& key : keys_) {
            const bool depends = std::any_of(
                key.dependsOn.begin(), key.dependsOn.end(),
                [&](std::string_view path) { return path.substr(0, path.find('.')) == result[i]; });
            if (depends && std::find(result.begin(), result.end(), key.name) == result.end())
                result.push_back(key.name);
        }
    }
    return result;
}

}  // namespace orvane
