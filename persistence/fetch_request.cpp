#include "persistence/fetch_request.h"

namespace orvane {

std::string FetchRequest::description() const {
    std::string result = "<FetchRequest entity: " + entityName + "; predicate: (" +
                         (predicate ? predicate->description() : std::string("none")) + "); sort orders: (";
    for (std::size_t i = 0; i < sortOrders.size(); ++i)
        result += (i > 0 ? ", " : "") + sortOrders[i].keyPath +
                  (sortOrders[i].ascending ? " ascending" : " descending");
    result += ")";
    if (fetchLimit > 0) result += "; limit: " + std::to_string(fetchLimit);
    if (fetchOffset > 0) result += "; offset: " + std::to_string(fetchOffset);
    if (textsWhenRead) result += "; texts when read";
    return result + ">";
}

}  // namespace orvane
