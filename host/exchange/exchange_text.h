#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvane::host {

/// Whether the text is well-formed UTF-8; a zero byte is a character like any other.
bool isUtf8(std::string_view text);

/// A text as exchange files hold it: as it is, but one that is not UTF-8 as "base64:" with its bytes (RFC
/// 4648), and so is one that happens to begin with that word.
std::string exchangeText(std::string_view text);
/// The text that `exchangeText` made this of. None when base64 is promised and does not follow.
std::optional<std::string> textFromExchange(std::string_view text);

/// Decimal form with as few digits as tell the number from all others, so that reading it yields the same
/// bits; "Infinity" and "-Infinity" for those.
std::string numberText(double number);
/// A decimal number, or one of the two words. None for anything else and for numbers beyond the range.
std::optional<double> numberFromText(std::string_view text);

}  // namespace orvane::host
