#pragma once

namespace orvane::host {

/// The style sheet of a page.
extern const char* const pageStyle;

}  // namespace orvane::host
