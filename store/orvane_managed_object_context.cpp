#include "store/orvane_managed_object_context.h"

#include "platform/platform.h"

namespace orvane {

std::optional<std::vector<Ref<ManagedObject>>> OrvaneManagedObjectContext::executeFetchRequest(
    const FetchRequest& request, Error* error) {
    if (!request.predicate) Platform::current().logSink().log(request.description());
    return ManagedObjectContext::executeFetchRequest(request, error);
}

}  // namespace orvane
