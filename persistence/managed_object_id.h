#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "foundation/export.h"
#include "persistence/model.h"

namespace orvane {

/// Identity of one stored object. It is temporary until the object is saved for the first time, and permanent
/// from then on; a deleted object's identifier is never given out again.
class ORVANE_EXPORT ManagedObjectID {
  public:
    ManagedObjectID() = default;
    ManagedObjectID(const EntityDescription* entity, std::shared_ptr<const std::string> storeIdentifier,
                    std::int64_t key)
        : entity_(entity), storeIdentifier_(std::move(storeIdentifier)), key_(key) {}

    const EntityDescription* entity() const { return entity_; }
    bool isTemporaryID() const { return key_ < 0; }
    /// The row's key; negative while the identifier is temporary.
    std::int64_t key() const { return key_; }

    /// Text that names the object across all contexts of one store: `x-orvane://STORE/Entity/p12`, or
    /// `x-orvane:///Entity/t12` while the identifier is temporary. Empty for no object.
    std::string URIRepresentation() const;

    explicit operator bool() const { return entity_ != nullptr; }
    friend bool operator==(const ManagedObjectID& left, const ManagedObjectID& right) {
        return left.entity_ == right.entity_ && left.key_ == right.key_;
    }

  private:
    const EntityDescription* entity_ = nullptr;
    std::shared_ptr<const std::string> storeIdentifier_;
    std::int64_t key_ = 0;
};

}  // namespace orvane

template <>
struct std::hash<orvane::ManagedObjectID> {
    std::size_t operator()(const orvane::ManagedObjectID& identifier) const noexcept {
        return std::hash<std::int64_t>{}(identifier.key()) ^ std::hash<const void*>{}(identifier.entity());
    }
};
