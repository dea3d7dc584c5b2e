#pragma once

#include <glib.h>

#include <memory>

#include "foundation/internal.h"

namespace orvane {

struct VariantRelease {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
};
/// Owns a value as D-Bus carries them.
using Variant = std::unique_ptr<GVariant, VariantRelease>;

}  // namespace orvane
