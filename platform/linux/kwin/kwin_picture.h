#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/internal.h"
#include "platform/linux/desktop_backend.h"

namespace orvane {

/// What our script in KWin tells at one moment.
struct KwinPicture {
    /// On screen, front to back.
    std::vector<DesktopWindow> windows;
    std::optional<DesktopWindow> active;
};

/// Reads the script's reports, and gives each window a number that it keeps.
class KwinPictureReader {
  public:
    /// None when the text is no report; a window without an identifier is passed over.
    std::optional<KwinPicture> read(std::string_view report);

  private:
    /// By KWin's identifiers, of the windows that the last report told.
    std::map<std::string, std::int64_t> numbers_;
    std::int64_t lastNumber_ = 0;
};

}  // namespace orvane
