// Texts of models: what is read is written and read again as the same.

#include "persistence/model.h"

#include "fuzz/common.h"
#include "persistence/model_writer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane;
    Error error;
    const auto model = ManagedObjectModel::modelWithText(fuzz::textOf(data, size), "input", &error);
    fuzz::demand(model || error, "a model that cannot be read is told why");
    if (!model) return 0;
    const auto again = ManagedObjectModel::modelWithText(modelText(*model), "own text", &error);
    fuzz::demand(again && again->entities() == model->entities() && again->name() == model->name(),
                 "a model's own text is that model");
    return 0;
}
