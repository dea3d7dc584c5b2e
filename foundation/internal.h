#pragma once

/// Included by every header that is not part of the public interface, so that a copy of such a header
/// fails plainly outside the library instead of half working.
#ifndef ORVANE_INTERNAL
#error "This header is internal to Orvane. Include <orvane/orvane.h> instead."
#endif
