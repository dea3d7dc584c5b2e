#pragma once

#include "persistence/managed_object_context.h"

namespace orvane {

/// The main context of a store: logs every fetch that has no predicate.
class ORVANE_EXPORT OrvaneManagedObjectContext : public ManagedObjectContext {
  public:
    using ManagedObjectContext::ManagedObjectContext;

    std::optional<std::vector<Ref<ManagedObject>>> executeFetchRequest(const FetchRequest& request,
                                                                       Error* error = nullptr) override;
};

}  // namespace orvane
