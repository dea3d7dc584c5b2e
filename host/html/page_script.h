#pragma once

namespace orvane::host {

/// The one script of a page. Without it everything can still be reached, by Tab alone; with it a lane, or the
/// rows of a heat map, take one stop of the Tab key and the arrow keys move within.
extern const char* const pageScript;

}  // namespace orvane::host
