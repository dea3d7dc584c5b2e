#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/color.h"
#include "foundation/date.h"

namespace orvane::host {

/// Whether standard output is a terminal.
bool isTerminal();
/// Whether colours may be shown: on a terminal, unless the user set NO_COLOR (no-color.org).
bool showsColors();
/// Columns of the terminal; 80 when it does not tell.
std::size_t terminalWidth();

/// Two blanks in the colour, or nothing where colours are not shown.
std::string swatch(const std::optional<Color>& color);

/// "2:05:09", or "5:09" below an hour.
std::string clockText(DecimalSeconds duration);
/// "2026-03-02 08:00" in the local time zone; "-" for none.
std::string localText(const std::optional<Date>& date);
/// The text without control characters, cut to a number of characters with an ellipsis at the end.
std::string displayText(std::string_view text, std::size_t width);

/// Prints rows under a heading in columns as wide as their texts; columns named in `right` are set flush
/// right.
void printTable(const std::vector<std::string>& heading, const std::vector<std::vector<std::string>>& rows,
                const std::vector<std::size_t>& right = {});

}  // namespace orvane::host
