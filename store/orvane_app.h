#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "foundation/color.h"
#include "store/_orvane_app.h"

namespace orvane {

/// One tracked application, known by its bundle identifier. What is not stored is computed on every read.
class ORVANE_EXPORT OrvaneApp : public _OrvaneApp {
  public:
    static const KeyTable& classKeyTable();
    static std::set<std::string_view> keyPathsForValuesAffectingDuration();
    static std::set<std::string_view> keyPathsForValuesAffectingLastUsedDate();

    /// The display colour: opaque white without a stored text, none for a text that is no colour.
    std::optional<Color> colorValue() const;
    /// Where the application is installed; none when its identifier is absent or the desktop does not know
    /// it. Main thread only, as is everything below that needs it.
    std::optional<std::string> path() const;
    std::optional<std::filesystem::path> URL() const;
    /// Whether the application came from the platform's own shop: a receipt lies in its bundle.
    bool isAppStore() const;

    /// Time spent in all recordings together. Changes of a recording's dates are not announced here.
    DecimalSeconds duration() const;
    /// The latest end of a recording; none without recordings.
    std::optional<Date> lastUsedDate() const;

    /// Takes name and colour anew from the installed application; what it does not tell stays as it is. The
    /// caller saves.
    void resetColor(const void* sender = nullptr);
    /// The stored form of a colour: see `orvane::hexStringForColor`.
    std::string hexStringForColor(const std::optional<Color>& color) const;
};

}  // namespace orvane
