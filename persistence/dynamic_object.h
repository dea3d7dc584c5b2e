#pragma once

#include <memory>

#include "foundation/internal.h"
#include "persistence/managed_object.h"

namespace orvane {

/// Object of an entity without a C++ class of its own: everything is read and set by key.
class DynamicObject : public ManagedObject {
  public:
    /// The keys of such objects: one a property. `entity` must outlive them.
    static std::unique_ptr<KeyTable> makeKeys(const EntityDescription& entity);

    explicit DynamicObject(const EntityTable& table);
    ~DynamicObject() override;

    const KeyTable& keyTable() const override;
    Value valueForKey(std::string_view key) const override;
    void setValueForKey(const Value& value, std::string_view key) override;

    void* rowAddress() { return row_.get(); }

  private:
    const EntityTable& layout_;
    std::unique_ptr<std::byte[]> row_;
};

}  // namespace orvane
