#pragma once

/// Marks what the shared library lets its users link against; everything else stays hidden.
#define ORVANE_EXPORT __attribute__((visibility("default")))
